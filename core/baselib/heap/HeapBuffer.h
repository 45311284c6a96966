// HeapBuffer: owns one block of the heap, an array of plain values, and frees it. What OwningHandle is to things of the
// system. An empty one holds nothing and costs nothing.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"

#include <type_traits>
#include <utility>

namespace corvix {

template <class T>
class HeapBuffer {
 public:
  HeapBuffer() noexcept = default;

  // Takes over a block of _smalloc's; null for none.
  explicit HeapBuffer(T* block) noexcept : block_(block) {}
  HeapBuffer(HeapBuffer&& other) noexcept : block_(other.release()) {}
  HeapBuffer& operator=(HeapBuffer&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~HeapBuffer() { _sfree(block_); }

  // Room for `count` values, which are not set, in place of what was held. When memory is short, `allocate` throws
  // std::bad_alloc and `tryAllocate` answers false, and what was held stays.
  void allocate(std::size_t count) {
    if (!tryAllocate(count)) throw std::bad_alloc();
  }
  bool tryAllocate(std::size_t count) noexcept {
    T* const block = isPossible(count) ? static_cast<T*>(_smalloc(count * sizeof(T))) : nullptr;
    if (block) reset(block);
    return block != nullptr;
  }

  // Keeps the values as far as they have room; false when memory is short, and nothing has changed then.
  bool tryResize(std::size_t count) noexcept {
    T* const block = isPossible(count) ? static_cast<T*>(_srealloc(block_, count * sizeof(T))) : nullptr;
    if (block) block_ = block;
    return block != nullptr;
  }

  T* get() const noexcept { return block_; }
  T& operator[](std::size_t index) const noexcept { return block_[index]; }
  T* operator->() const noexcept { return block_; }
  explicit operator bool() const noexcept { return block_ != nullptr; }

  // The caller frees it with _sfree from now on.
  [[nodiscard]] T* release() noexcept { return std::exchange(block_, nullptr); }

  void reset(T* block = nullptr) noexcept { _sfree(std::exchange(block_, block)); }

 private:
  static bool isPossible(std::size_t count) noexcept {
    static_assert(std::is_trivially_destructible<T>::value, "a HeapBuffer goes without a look at its values");
    return count > 0 && count <= static_cast<std::size_t>(-1) / sizeof(T);
  }

  T* block_ = nullptr;
};

}  // namespace corvix
