// Counts what a test leaves behind.
#pragma once

#include <cstddef>

#if defined(_WIN32)
#include <windows.h>

#include <malloc.h>
#else
#include <sanitizer/allocator_interface.h>
#endif

namespace corvix::testing_support {

// Blocks in use in the heap of the C run-time and in that of the process. Exact: whatever is allocated between
// two calls and not freed makes a difference.
inline std::size_t heapBlocksInUse() {
#if defined(_WIN32)
  std::size_t count = 0;
  for (void* heap : {reinterpret_cast<void*>(_get_heap_handle()), static_cast<void*>(GetProcessHeap())}) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heap);
    while (HeapWalk(heap, &entry)) count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    HeapUnlock(heap);
  }
  return count;
#else
  return __sanitizer_get_current_allocated_bytes();  // bytes tell the same difference
#endif
}

}  // namespace corvix::testing_support
