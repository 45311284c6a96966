// Counting and using up what the system has: the objects of GDI and the blocks of the C run-time's heap.
#pragma once

#include <malloc.h>

#include <vector>

#include <windows.h>

namespace corvix::testing {

inline std::vector<HBRUSH> takeAllBrushes() {
  std::vector<HBRUSH> brushes;
  brushes.reserve(70000);
  // Each of its own: the system may share equal ones.
  while (HBRUSH const brush = CreateSolidBrush(static_cast<COLORREF>(brushes.size()))) brushes.push_back(brush);
  return brushes;
}

// How many objects this process can still make.
inline int freeGdiObjects() {
  const std::vector<HBRUSH> brushes = takeAllBrushes();
  for (HBRUSH const brush : brushes) DeleteObject(brush);
  return static_cast<int>(brushes.size());
}

class GdiExhaustion {
 public:
  GdiExhaustion() : brushes_(takeAllBrushes()) {}
  ~GdiExhaustion() {
    for (HBRUSH const brush : brushes_) DeleteObject(brush);
  }
  GdiExhaustion(const GdiExhaustion&) = delete;
  GdiExhaustion& operator=(const GdiExhaustion&) = delete;

 private:
  std::vector<HBRUSH> brushes_;
};

inline std::size_t heapBlocks() {
  const auto heap = reinterpret_cast<HANDLE>(_get_heap_handle());
  std::size_t count = 0;
  PROCESS_HEAP_ENTRY entry = {};
  HeapLock(heap);
  while (HeapWalk(heap, &entry)) count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
  HeapUnlock(heap);
  return count;
}

}  // namespace corvix::testing
