// The raw heap functions that every part of the library and every plug-in allocates with. A block may be
// allocated in one module and freed in another. [any thread]
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

extern "C" {

// At least `sizeBytes` bytes, or null when they cannot be had.
CORVIX_API void* _smalloc(std::size_t sizeBytes) noexcept;

// Gives a block back; null is ignored.
CORVIX_API void _sfree(void* block) noexcept;

// Resizes a block, moving it if need be; null when that cannot be done, the old block then stands.
CORVIX_API void* _srealloc(void* block, std::size_t sizeBytes) noexcept;

// The heap's size of a block in bytes, at least what was asked for; 0 for null. One function, three names. A block of 4
// GiB and more has 0xFFFFFFFF.
CORVIX_API u32 smsize(void* block) noexcept;
CORVIX_API u32 _smsize(void* block) noexcept;
CORVIX_API u32 __smsize(void* block) noexcept;

// The debugging twins: the extra arguments are ignored, and either name may free what the other allocated.
CORVIX_API void* __smalloc(std::size_t sizeBytes, int kind, const char* file, int line) noexcept;
CORVIX_API void __sfree(void* block, int kind) noexcept;
CORVIX_API void* __srealloc(void* block, std::size_t sizeBytes, int kind, const char* file, int line) noexcept;

}  // extern "C"

}  // namespace corvix
