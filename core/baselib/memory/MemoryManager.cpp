#include "core/baselib/memory/MemoryManager.h"

#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/ManagerState_p.h"
#include "core/baselib/memory/MemoryShell_p.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/memory/SystemMemoryPool.h"
#include "core/baselib/system/ForeignCall.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace corvix {

namespace {

using memory::ManagerLock;

constexpr int kHibernateFactor = 20;

std::atomic<IMemoryShell*> shellOfMemory{nullptr};

i32 wantedKind(u32 flags) noexcept {
  if ((flags & pool::kFixedSize) && !(flags & (pool::kNotFixed | pool::kPlainHeap))) return pool::kFixed;
  return (flags & pool::kSizeClasses) && !(flags & pool::kPlainHeap) ? pool::kSizeClass : pool::kSystem;
}

template <class Pool, class... Arguments>
BMemoryPool* newPool(Arguments... arguments) {
  void* const place = _smalloc(sizeof(Pool));
  return place ? new (place) Pool(arguments...) : nullptr;
}

// One that throws has given nothing back; the next is asked.
template <class Sleeper>
bool askToHibernate(Sleeper& one, bool argument) noexcept {
  return callForeign(codeOf(&one), L"hibernate", [&] { return one.hibernate(argument); });
}

template <class T>
bool enter(memory::Registrations<T>& list, T* object) noexcept {
  using Node = typename memory::Registrations<T>::Node;
  auto* const node = static_cast<Node*>(_smalloc(sizeof(Node)));
  if (node) list.push(node, object);
  return node != nullptr;
}

// Stores 1 at address zero. The address is read at run time: a compiler may turn the plain store into another trap.
[[noreturn]] void endWithAccessViolation() noexcept {
  int* volatile nowhere = nullptr;
  SetErrorMode(SEM_NOGPFAULTERRORBOX);
  for (;;) *static_cast<volatile int*>(nowhere) = 1;
}

}  // namespace

void setMemoryShell(IMemoryShell* shell) noexcept { shellOfMemory.store(shell, std::memory_order_release); }

IMemoryShell* memoryShell() noexcept { return shellOfMemory.load(std::memory_order_acquire); }

BMemoryPool* BMemoryManager::getPool(u32 flags, u32 sizeBytes) {
  const i32 kind = wantedKind(flags);
  if (!(flags & pool::kNeverShared)) {
    const ManagerLock lock;
    if (!lock) return nullptr;
    // A request for size classes that no pool accepts (both kFixedSize and kNotFixed set) makes a new pool each
    // time. Deliberate: it is how a caller gets one of its own without kNeverShared.
    for (auto* node = lock->pools.first(); node; node = node->next) {
      BMemoryPool* const candidate = node->object;
      if (candidate->poolKind() != kind || !candidate->accepts(flags, sizeBytes)) continue;
      candidate->addRef();
      return candidate;
    }
  }
  switch (kind) {
    case pool::kFixed:
      return newPool<BFixedMemoryPool>(sizeBytes, nullptr);
    case pool::kSizeClass:
      return newPool<BSizeClassMemoryPool>(nullptr);
    default:
      return newPool<BSystemMemoryPool>();
  }
}

bool BMemoryManager::registerPool(BMemoryPool* memoryPool) noexcept {
  const ManagerLock lock;
  if (!lock || !memoryPool) return false;
  // Deliberate: the node that needs no memory serves the first registration of the process only. It keeps its
  // object when that unregisters, so it is never free again.
  if (lock->firstPool.object) return enter(lock->pools, memoryPool);
  lock->pools.push(&lock->firstPool, memoryPool);
  return true;
}

bool BMemoryManager::unregisterPool(BMemoryPool* memoryPool) noexcept {
  const ManagerLock lock;
  if (!lock) return false;
  auto* const node = lock->pools.unlink(memoryPool);
  if (node && node != &lock->firstPool) _sfree(node);
  return node != nullptr;
}

bool BMemoryManager::registerHibernatable(BHibernatable* object) noexcept {
  const ManagerLock lock;
  if (!lock || !object || !enter(lock->hibernatables, object)) return false;
  lock->holdReserve();
  return true;
}

bool BMemoryManager::unregisterHibernatable(BHibernatable* object) noexcept {
  const ManagerLock lock;
  if (!lock) return false;
  auto* const node = lock->hibernatables.unlink(object);
  _sfree(node);
  return node != nullptr;
}

void BMemoryManager::visitPools(PoolVisitor visitor, void* context) {
  const ManagerLock lock;
  if (lock && visitor) lock->pools.forEach([=](BMemoryPool* one) { visitor(one, context); });
}

void BMemoryManager::visitHibernatables(HibernatableVisitor visitor, void* context) {
  const ManagerLock lock;
  if (lock && visitor) lock->hibernatables.forEach([=](BHibernatable* one) { visitor(one, context); });
}

int BMemoryManager::getHibernateFactor() noexcept { return kHibernateFactor; }

bool BMemoryManager::hibernateHibers(bool argument) {
  const ManagerLock lock;
  // An allocation that fails inside `hibernate` comes back here: the round that is under way is its answer.
  if (!lock || lock->isHibernating) return false;
  struct Round {
    explicit Round(memory::ManagerState& whose) noexcept : state(whose) { state.isHibernating = true; }
    ~Round() {
      state.isHibernating = false;
      state.hibernationScheduled = false;
      state.holdReserve();
    }
    memory::ManagerState& state;
  } round(*lock);
  _sfree(std::exchange(lock->reserve, nullptr));
  bool released = false;
  lock->hibernatables.forEach([&](BHibernatable* one) { released |= askToHibernate(*one, argument); });
  return released;
}

bool BMemoryManager::hibernatePools(bool argument) {
  const ManagerLock lock;
  if (!lock) return false;
  bool released = false;
  lock->pools.forEach([&](BMemoryPool* one) { released |= askToHibernate(*one, argument); });
  lock->holdReserve();
  return released;
}

bool BMemoryManager::drainMemory(u32) { return hibernateHibers(true); }

void BMemoryManager::performScheduled() {
  const ManagerLock lock;
  if (!lock) return;
  if (lock->hibernationScheduled) hibernateHibers(lock->scheduledArgument);
  lock->holdReserve();
}

void BMemoryManager::scheduleHibernation() noexcept {
  const ManagerLock lock;
  if (lock) lock->hibernationScheduled = true;
}

void* BMemoryManager::getHibernateBuffer() noexcept {
  const ManagerLock lock;
  return lock ? lock->hibernateBuffer : nullptr;
}

bool BMemoryManager::reserveHibernateBuffer(u32 sizeBytes) noexcept {
  // Held over the reallocation too, or two threads would free the old buffer twice and a compaction lose it.
  const ManagerLock lock;
  if (!lock) return false;
  // Deliberate: a buffer of exactly this size is reallocated.
  if (lock->hibernateBufferBytes > sizeBytes) return true;
  // Never of 0 bytes: that would free the buffer.
  void* const buffer = _srealloc(lock->hibernateBuffer, std::max(sizeBytes, 1u));
  if (!buffer) return false;
  lock->hibernateBuffer = buffer;
  lock->hibernateBufferBytes = sizeBytes;
  return true;
}

bool BMemoryManager::allowNULLreturn() noexcept {
  const ManagerLock lock;
  return lock && lock->nullReturnAllowed;
}

bool BMemoryManager::allowNULLreturn(bool allow) noexcept {
  const ManagerLock lock;
  return lock && std::exchange(lock->nullReturnAllowed, allow);
}

bool BMemoryManager::notEnoughMemory() {
  if (allowNULLreturn()) return false;
  IMemoryShell* const shell = memoryShell();
  if (shell && shell->askToRetry(0)) return true;
  endWithAccessViolation();
}

}  // namespace corvix
