// Runs code that may crash, module start-up and data that a foreign file describes, and comes back.
#pragma once

#include "shell/guard/LoaderLock_p.h"

#include <optional>

#include <malloc.h>

namespace corvix {

// Nothing when `function` returned, else the system's code of the exception that ended it (0xC0000005: access
// violation, or whatever number somebody raised, 0 included). What the function was doing is left as it was, locks
// included; the modes of the floating-point units are as before. A C++ exception must not leave it.
std::optional<u32> guardedCall(void (*function)(void* argument), void* argument) noexcept;

// After a stack overflow, whoever has caught it: the next one is an exception again, where it would end the process.
inline void guardStackAgain() noexcept { _resetstkoflw(); }

// Where the fault was in the system's loader, its lock is given back.
template <class Call>
std::optional<u32> guarded(Call call) noexcept {
  const LoaderLockDepth lock;
  const auto fault = guardedCall([](void* argument) { (*static_cast<Call*>(argument))(); }, &call);
  if (fault) lock.restore();
  return fault;
}

}  // namespace corvix
