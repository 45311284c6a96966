// HeapAllocated: base of what is made with `new` and may be deleted by another module. HeapAllocator: the
// same heap for the containers of the language's library.
#pragma once

#include "core/baselib/heap/Heap.h"

#include <new>

namespace corvix {

// Throws std::bad_alloc where the language's own `new` would.
inline void* heapAllocate(std::size_t sizeBytes) {
  if (void* block = _smalloc(sizeBytes)) return block;
  throw std::bad_alloc();
}

class HeapAllocated {
 public:
  static void* operator new(std::size_t sizeBytes) { return heapAllocate(sizeBytes); }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* block) noexcept { _sfree(block); }
  static void operator delete(void*, void*) noexcept {}

 protected:
  HeapAllocated() = default;
  ~HeapAllocated() = default;
};

template <class T>
struct HeapAllocator {
  using value_type = T;

  HeapAllocator() = default;
  template <class U>
  HeapAllocator(const HeapAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    if (count > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_alloc();
    return static_cast<T*>(heapAllocate(count * sizeof(T)));
  }
  void deallocate(T* block, std::size_t) noexcept { _sfree(block); }

  friend bool operator==(const HeapAllocator&, const HeapAllocator&) noexcept { return true; }
  friend bool operator!=(const HeapAllocator&, const HeapAllocator&) noexcept { return false; }
};

}  // namespace corvix
