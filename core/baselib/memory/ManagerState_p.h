// The state of the memory manager, and the way to it: under its lock, or not at all.
#pragma once

#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/memory/Registrations_p.h"
#include "core/baselib/system/NativeSection_p.h"

namespace corvix::memory {

struct ManagerState {
  SCriticalSection section;
  bool nullReturnAllowed = false;
  bool hibernationScheduled = false;
  bool scheduledArgument = true;
  bool isHibernating = false;
  void* reserve = nullptr;
  void* hibernateBuffer = nullptr;
  u32 hibernateBufferBytes = 0;
  u32 pressureBytes = 0;  // asked of the system pool since the last probe
  Registrations<BHibernatable> hibernatables;
  Registrations<BMemoryPool> pools;
  Registrations<BMemoryPool>::Node firstPool{};

  void holdReserve() noexcept;
};

// Null before the first use and after the end.
extern constinit ManagerState* liveState;

// Starts the manager at its first use; null after its end.
ManagerState* startManager() noexcept;

// Frees what the manager holds and deletes the lock, whatever is still registered.
void endManager() noexcept;

// Holds the lock, unless the manager has ended: there is nothing to be touched then.
class ManagerLock {
 public:
  ManagerLock() noexcept : state_(liveState) {
    if (!state_) [[unlikely]]
      state_ = startManager();
    if (state_) [[likely]]
      enterNative(native(state_->section));
  }
  ~ManagerLock() {
    if (state_) leaveNative(native(state_->section));
  }
  ManagerLock(const ManagerLock&) = delete;
  ManagerLock& operator=(const ManagerLock&) = delete;

  explicit operator bool() const noexcept { return state_ != nullptr; }
  ManagerState& operator*() const noexcept { return *state_; }
  ManagerState* operator->() const noexcept { return state_; }

  // Ends the guard and leaves the lock held.
  void keepHeld() noexcept { state_ = nullptr; }

 private:
  ManagerState* state_;
};

}  // namespace corvix::memory
