// PixelBuffer: pixels of an image that is converted, all 0 at first. Large ones are pages of the system's, which cost
// nothing until they are written: of a large image only what is seen is converted, in its place.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "core/baselib/system/OwningHandle_p.h"

#include <cstring>

#include <windows.h>

namespace corvix {

class PixelBuffer {
 public:
  // Throws std::bad_alloc.
  void allocate(std::size_t sizeBytes) {
    constexpr std::size_t kLarge = 1 << 20;
    if (sizeBytes < kLarge) {
      block_.reset(static_cast<u8*>(heapAllocate(sizeBytes)));
      std::memset(block_.get(), 0, sizeBytes);
      return;
    }
    pages_.reset(static_cast<u8*>(VirtualAlloc(nullptr, sizeBytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)));
    if (!pages_) throw std::bad_alloc();
  }
  u8* data() const noexcept { return block_ ? block_.get() : pages_.get(); }

 private:
  struct FreeBlock : NullIsNone<u8*> {
    static void close(u8* block) noexcept { _sfree(block); }
  };
  struct FreePages : NullIsNone<u8*> {
    static void close(u8* pages) noexcept { VirtualFree(pages, 0, MEM_RELEASE); }
  };
  OwningHandle<FreeBlock> block_;
  OwningHandle<FreePages> pages_;
};

}  // namespace corvix
