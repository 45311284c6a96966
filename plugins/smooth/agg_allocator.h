// What Anti-Grain Geometry asks for (AGG_CUSTOM_ALLOCATOR): its memory is the library's heap, counted like all other.
// Its arrays free their block before they ask for a larger one, and would free it once more if there were none: so what
// they will ask for is put aside first.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"

#include <utility>

namespace agg {

class Aside {
 public:
  // Two blocks for those two that are asked for next. Throws std::bad_alloc.
  Aside(std::size_t firstBytes, std::size_t secondBytes) {
    blocks_[0] = corvix::heapAllocate(firstBytes);
    blocks_[1] = corvix::_smalloc(secondBytes);
    if (blocks_[1]) return;
    corvix::_sfree(std::exchange(blocks_[0], nullptr));
    throw std::bad_alloc();
  }
  ~Aside() {
    for (void*& block : blocks_) corvix::_sfree(std::exchange(block, nullptr));
  }
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;

  static void* take() noexcept {
    for (void*& block : blocks_) {
      if (block) return std::exchange(block, nullptr);
    }
    return nullptr;
  }

 private:
  static inline thread_local void* blocks_[2] = {};
};

// Only plain values.
template <class T>
struct pod_allocator {
  static T* allocate(unsigned count) {
    if (void* const block = Aside::take()) return static_cast<T*>(block);
    return corvix::HeapAllocator<T>().allocate(count);
  }
  static void deallocate(T* block, unsigned) noexcept { corvix::_sfree(block); }
};

template <class T>
struct obj_allocator {
  static T* allocate() { return new (corvix::heapAllocate(sizeof(T))) T; }
  static void deallocate(T* object) noexcept {
    if (object) object->~T();
    corvix::_sfree(object);
  }
};

}  // namespace agg
