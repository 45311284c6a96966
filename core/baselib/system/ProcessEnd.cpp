#include "core/baselib/system/ProcessEnd_p.h"

#include <atomic>

#include <windows.h>

namespace corvix {

namespace {

constinit std::atomic<bool> processEnds{false};

using Ask = BOOLEAN(WINAPI*)();

// Modules that use the library are detached before it: the system knows earlier than we are told. Looked up while the
// library is loaded, not by who waits for a lock.
const Ask askTheSystem = reinterpret_cast<Ask>(
    reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));

}  // namespace

bool isProcessEnding() noexcept {
  if (processEnds.load(std::memory_order_relaxed)) return true;
  if (!askTheSystem || !askTheSystem()) return false;
  setProcessEnding();
  return true;
}

void setProcessEnding() noexcept { processEnds.store(true, std::memory_order_relaxed); }

}  // namespace corvix
