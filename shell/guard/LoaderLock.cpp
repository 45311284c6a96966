#include "shell/guard/LoaderLock_p.h"

#include <cstring>

#include <winternl.h>

namespace corvix {

namespace {

// Where the block of the process has the address of the lock: documented nowhere, the same in every version.
constexpr std::size_t kLockInProcessBlock = sizeof(void*) == 4 ? 0xA0 : 0x110;

CRITICAL_SECTION* findLock() noexcept {
  CRITICAL_SECTION* lock = nullptr;
  const auto* const block = reinterpret_cast<const char*>(NtCurrentTeb()->ProcessEnvironmentBlock);
  std::memcpy(&lock, block + kLockInProcessBlock, sizeof lock);
  return lock;
}

}  // namespace

CRITICAL_SECTION* const LoaderLockDepth::lock_ = findLock();

u32 LoaderLockDepth::ofThisThread() noexcept {
  if (!lock_) return 0;
  const auto owner = reinterpret_cast<std::uintptr_t>(lock_->OwningThread);
  return owner == GetCurrentThreadId() ? static_cast<u32>(lock_->RecursionCount) : 0;
}

void LoaderLockDepth::restore() const noexcept {
  while (ofThisThread() > depth_) LeaveCriticalSection(lock_);
}

}  // namespace corvix
