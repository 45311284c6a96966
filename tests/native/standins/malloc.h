// This system's heap, with the other system's name for the size of a block.
#pragma once

#include_next <malloc.h>

inline size_t _msize(void* block) { return malloc_usable_size(block); }
