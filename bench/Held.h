// What the process holds of its heap.
#pragma once

#include <windows.h>

#include <malloc.h>

namespace corvix::bench {

// What the heap says that it holds, with its own words beside the blocks. Pools get their chunks from it.
inline double heldByHeap() {
  double sum = 0;
  HANDLE const heap = reinterpret_cast<HANDLE>(_get_heap_handle());
  PROCESS_HEAP_ENTRY entry{};
  HeapLock(heap);
  while (HeapWalk(heap, &entry)) {
    if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) sum += static_cast<double>(entry.cbData + entry.cbOverhead);
  }
  HeapUnlock(heap);
  return sum;
}

}  // namespace corvix::bench
