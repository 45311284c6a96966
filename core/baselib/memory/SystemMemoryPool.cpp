#include "core/baselib/memory/SystemMemoryPool.h"

#include "core/baselib/memory/ManagerState_p.h"

#include <limits>

namespace corvix {

namespace {

using memory::ManagerLock;

constexpr u32 kProbeBytes = 0x40000;  // also the largest request that counts towards the next probe
constexpr u32 kProbeEvery = 0x80000;  // bytes asked for

// Finds out in time when large blocks become scarce.
void watchPressure(memory::ManagerState& state, u32 sizeBytes) {
  if (sizeBytes > kProbeBytes) {
    state.pressureBytes = 0;
    return;
  }
  state.pressureBytes += sizeBytes;
  if (state.pressureBytes < kProbeEvery) return;
  state.pressureBytes = 0;
  if (void* const probe = _smalloc(kProbeBytes)) {
    _sfree(probe);
  } else {
    BMemoryManager::drainMemory(kProbeBytes);
  }
}

// The largest number is what sizes become that do not fit 32 bits: no heap has it, although one of 64 bits could.
std::size_t heapSize(u32 sizeBytes) noexcept {
  return sizeBytes == 0xFFFFFFFF ? std::numeric_limits<std::size_t>::max() : sizeBytes;
}

// Calls the heap until it answers or null may be returned.
template <class HeapCall>
void* insist(u32 sizeBytes, HeapCall heapCall) {
  if (void* const block = heapCall()) [[likely]]
    return block;
  BMemoryManager::drainMemory(sizeBytes);
  void* block = heapCall();
  while (!block && BMemoryManager::notEnoughMemory()) block = heapCall();
  return block;
}

}  // namespace

// As in every pool: the lock is held while other threads could see the object half made or half gone.
BSystemMemoryPool::BSystemMemoryPool() : BSystemMemoryPool(ManagerLock()) {}

BSystemMemoryPool::BSystemMemoryPool(const ManagerLock&) {}

BSystemMemoryPool::~BSystemMemoryPool() {
  const ManagerLock lock;
  BMemoryManager::unregisterPool(this);
}

void* BSystemMemoryPool::alloc(u32 sizeBytes) {
  ManagerLock lock;
  if (!lock) return nullptr;
  watchPressure(*lock, sizeBytes);
  void* const block = insist(sizeBytes, [=] { return _smalloc(heapSize(sizeBytes)); });
  // Deliberate, and callers that allow null returns rely on it: they leave the lock when they have dealt with it.
  if (!block) lock.keepHeld();
  return block;
}

void BSystemMemoryPool::free(void* block) {
  const ManagerLock lock;
  _sfree(block);
}

// Unlike `alloc`, never returns with the lock held.
void* BSystemMemoryPool::realloc(void* block, u32 sizeBytes) {
  const ManagerLock lock;
  if (!lock) return nullptr;
  if (block && sizeBytes == 0) {  // the heap's null is no failure here: the block is gone
    _sfree(block);
    return nullptr;
  }
  watchPressure(*lock, sizeBytes);
  return insist(sizeBytes, [=] { return _srealloc(block, heapSize(sizeBytes)); });
}

u32 BSystemMemoryPool::blockSize(void* block) { return smsize(block); }

i32 BSystemMemoryPool::poolKind() const noexcept { return pool::kSystem; }

bool BSystemMemoryPool::accepts(u32, u32) const noexcept { return true; }

}  // namespace corvix
