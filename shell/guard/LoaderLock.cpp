#include "shell/guard/LoaderLock_p.h"

#include <cstring>

#include <windows.h>
#include <winternl.h>

namespace corvix {

namespace {

// Where the block of the process has the address of the lock: documented nowhere, the same in every version.
constexpr std::size_t kLockInProcessBlock = sizeof(void*) == 4 ? 0xA0 : 0x110;

CRITICAL_SECTION* loaderLock() noexcept {
  CRITICAL_SECTION* lock = nullptr;
  const auto* const block = reinterpret_cast<const char*>(NtCurrentTeb()->ProcessEnvironmentBlock);
  std::memcpy(&lock, block + kLockInProcessBlock, sizeof lock);
  return lock;
}

u32 depthOfThisThread() noexcept {
  const CRITICAL_SECTION* const lock = loaderLock();
  const auto owner = reinterpret_cast<std::uintptr_t>(lock ? lock->OwningThread : nullptr);
  return lock && owner == GetCurrentThreadId() ? static_cast<u32>(lock->RecursionCount) : 0;
}

}  // namespace

LoaderLockDepth::LoaderLockDepth() noexcept : depth_(depthOfThisThread()) {}

void LoaderLockDepth::restore() const noexcept {
  while (depthOfThisThread() > depth_) LeaveCriticalSection(loaderLock());
}

}  // namespace corvix
