// The parts of a fixed pool's memory, and the two operations that a size-class pool does under its own lock.
#pragma once

#include "core/baselib/memory/FixedMemoryPool.h"

#include <algorithm>
#include <cassert>

namespace corvix {

struct BFixedMemoryPool::Chunk {
  Chunk* next;
  u32 payloadBytes;
  u32 usedBytes;  // as the last compaction found it
};

// From one block to the next in 64 bits: a run's entry and what callers keep in a block lie as pointers want it. In 32
// bits blocks lie as close as their size says.
constexpr u32 kBlockAlignment = sizeof(void*) == 4 ? 1 : 8;

// Lies in the free memory itself: the run of `lengthBytes` that starts there.
struct BFixedMemoryPool::FreeRun {
  FreeRun* next;
  u32 lengthBytes;
};

template <class Size>
constexpr Size BFixedMemoryPool::strideOf(Size sizeBytes) noexcept {
  const Size least = std::max(sizeBytes, static_cast<Size>(sizeof(FreeRun)));
  return (least + kBlockAlignment - 1) / kBlockAlignment * kBlockAlignment;
}

inline void* BFixedMemoryPool::take(u32 sizeBytes) {
  assert(sizeBytes <= blockBytes_ && "more was asked of a fixed pool than its block size");
  if (!freeRuns_ && !grow()) [[unlikely]]
    return nullptr;
  FreeRun* const run = freeRuns_;
  // Deliberate: `alloc` counts what was asked for, `free` the whole block.
  handedOutBytes_ += sizeBytes;
  // No run starts where another's entry still stands.
  const u32 stride = strideOf(sizeBytes);
  if (stride <= run->lengthBytes / 2) {
    auto* const rest = reinterpret_cast<FreeRun*>(reinterpret_cast<char*>(run) + stride);
    *rest = {run->next, run->lengthBytes - stride};
    freeRuns_ = rest;
  } else {
    freeRuns_ = run->next;
  }
  return run;
}

inline void BFixedMemoryPool::put(void* block) noexcept {
  auto* const run = static_cast<FreeRun*>(block);
  *run = {freeRuns_, strideOf(blockBytes_)};
  freeRuns_ = run;
  handedOutBytes_ -= blockBytes_;
}

}  // namespace corvix
