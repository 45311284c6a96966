// The heap's functions, which here too reach the C library through slots that tests may replace.
#include <cstdlib>

#include <malloc.h>

extern "C" {
void* (*mallocSlot)(std::size_t) __asm__("__imp__malloc") = std::malloc;
void* (*reallocSlot)(void*, std::size_t) __asm__("__imp__realloc") = std::realloc;
void (*freeSlot)(void*) __asm__("__imp__free") = std::free;
}

namespace std {
inline void* mallocThroughSlot(size_t size) { return mallocSlot(size); }
inline void* reallocThroughSlot(void* block, size_t size) { return reallocSlot(block, size); }
inline void freeThroughSlot(void* block) { freeSlot(block); }
}  // namespace std

#define malloc mallocThroughSlot
#define realloc reallocThroughSlot
#define free freeThroughSlot
#include "core/baselib/heap/Heap.cpp"
