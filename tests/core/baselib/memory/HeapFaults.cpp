#include "tests/core/baselib/memory/HeapFaults.h"

#include "tests/support/ImportSlot.h"

#include <atomic>
#include <climits>

extern "C" {
extern void* (*mallocSlot)(std::size_t) __asm__("__imp__malloc");
extern void* (*reallocSlot)(void*, std::size_t) __asm__("__imp__realloc");
extern void (*freeSlot)(void*) __asm__("__imp__free");
}

namespace corvix::testing {

using testing_support::ImportSlot;

namespace {

std::atomic<int> asked, live, failFrom, failTo;
decltype(mallocSlot) realMalloc;
decltype(reallocSlot) realRealloc;
decltype(freeSlot) realFree;

bool refuse() {
  const int n = ++asked;
  return n >= failFrom && n <= failTo;
}

void* countedMalloc(std::size_t size) {
  void* const block = refuse() ? nullptr : realMalloc(size);
  if (block) ++live;
  return block;
}

void* countedRealloc(void* block, std::size_t size) {
  void* const moved = refuse() ? nullptr : realRealloc(block, size);
  if (moved && !block) ++live;
  return moved;
}

void countedFree(void* block) {
  if (block) --live;
  realFree(block);
}

}  // namespace

struct HeapFaults::Slots {
  ImportSlot<decltype(realMalloc)> mallocs{mallocSlot, countedMalloc};
  ImportSlot<decltype(realRealloc)> reallocs{reallocSlot, countedRealloc};
  ImportSlot<decltype(realFree)> frees{freeSlot, countedFree};
};

HeapFaults::HeapFaults(int n, Mode mode) {
  asked = 0;
  live = 0;
  failFrom = n;
  failTo = mode == Mode::Once ? n : INT_MAX;
  realMalloc = mallocSlot;
  realRealloc = reallocSlot;
  realFree = freeSlot;
  slots_ = std::make_unique<Slots>();
}

HeapFaults::HeapFaults() : HeapFaults(INT_MAX, Mode::Once) {}

HeapFaults::~HeapFaults() = default;

void HeapFaults::disarm() {
  failFrom = INT_MAX;
  failTo = INT_MAX;
}

bool HeapFaults::wasHit() const { return asked >= failFrom; }
int HeapFaults::liveBlocks() const { return live; }
int HeapFaults::requests() const { return asked; }

}  // namespace corvix::testing
