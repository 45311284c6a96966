#include "core/baselib/heap/Heap.h"

#include <algorithm>
#include <cstdlib>

#include <malloc.h>

namespace corvix {

void* _smalloc(std::size_t sizeBytes) noexcept { return std::malloc(sizeBytes); }

void _sfree(void* block) noexcept { std::free(block); }

void* _srealloc(void* block, std::size_t sizeBytes) noexcept { return std::realloc(block, sizeBytes); }

u32 smsize(void* block) noexcept {
  return block ? static_cast<u32>(std::min<std::size_t>(_msize(block), 0xFFFFFFFF)) : 0;
}

u32 _smsize(void* block) noexcept { return smsize(block); }

u32 __smsize(void* block) noexcept { return smsize(block); }

void* __smalloc(std::size_t sizeBytes, int, const char*, int) noexcept { return _smalloc(sizeBytes); }

void __sfree(void* block, int) noexcept { _sfree(block); }

void* __srealloc(void* block, std::size_t sizeBytes, int, const char*, int) noexcept {
  return _srealloc(block, sizeBytes);
}

}  // namespace corvix
