// Runs code that may crash, module start-up and data that a foreign file describes, and comes back.
#pragma once

#include "shell/guard/LoaderLock_p.h"

namespace corvix {

// 0 when `function` returned, else the system's code of the exception that ended it (0xC0000005: access
// violation, or whatever number somebody raised). What the function was doing is left as it was, locks included; the
// mode of the floating-point unit is as before. A C++ exception must not leave it.
u32 guardedCall(void (*function)(void* argument), void* argument) noexcept;

// Where the fault was in the system's loader, its lock is given back.
template <class Call>
u32 guarded(Call call) noexcept {
  const LoaderLockDepth lock;
  const u32 fault = guardedCall([](void* argument) { (*static_cast<Call*>(argument))(); }, &call);
  if (fault) lock.restore();
  return fault;
}

}  // namespace corvix
