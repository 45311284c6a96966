#include "core/baselib/memory/ManagerState_p.h"

#include "core/baselib/memory/SystemMemoryPool.h"

namespace corvix {

namespace {

using memory::ManagerState;

constexpr std::size_t kReserveBytes = 16384;

// Made at the first use, which may be another static's constructor; their ends are in endManager.
alignas(ManagerState) unsigned char stateStorage[sizeof(ManagerState)];
alignas(BSystemMemoryPool) unsigned char systemPoolStorage[sizeof(BSystemMemoryPool)];

constinit BSystemMemoryPool* systemPool = nullptr;
constinit bool hasEnded = false;

SCriticalSection& managerSection() noexcept { return reinterpret_cast<ManagerState*>(stateStorage)->section; }

// Brings the manager up when the library is loaded and down when it goes.
const struct Lifetime {
  Lifetime() noexcept { memory::startManager(); }
  ~Lifetime() { memory::endManager(); }
  Lifetime(const Lifetime&) = delete;
  Lifetime& operator=(const Lifetime&) = delete;
} lifetime;

}  // namespace

namespace memory {

constinit ManagerState* liveState = nullptr;

ManagerState* startManager() noexcept {
  if (liveState || hasEnded) return liveState;
  liveState = new (stateStorage) ManagerState;
  systemPool = new (systemPoolStorage) BSystemMemoryPool;
  return liveState;
}

void endManager() noexcept {
  ManagerState* const state = liveState;
  if (!state) return;
  // Held by a thread that the system has ended: what it was changing is left alone.
  const bool isWhole = state->section.tryEnter();
  if (isWhole) {
    _sfree(state->hibernateBuffer);
    _sfree(state->reserve);
    systemPool->~BSystemMemoryPool();
    state->section.leave();
  }
  systemPool = nullptr;
  hasEnded = true;
  liveState = nullptr;
  if (isWhole) state->~ManagerState();
}

void ManagerState::holdReserve() noexcept {
  if (!reserve) reserve = _smalloc(kReserveBytes);
}

}  // namespace memory

SCriticalSection& allocCSProc() noexcept {
  memory::startManager();
  return managerSection();
}

BMemoryPool* BMemoryManager::getSystemPool() noexcept {
  memory::startManager();
  return systemPool;
}

}  // namespace corvix
