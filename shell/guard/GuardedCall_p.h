// Runs code that may crash, module start-up and data that a foreign file describes, and comes back.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

// 0 when `function` returned, else the system's code of the exception that ended it (0xC0000005: access
// violation). What the function was doing is left as it was, locks included. A C++ exception must not leave it.
u32 guardedCall(void (*function)(void* argument), void* argument) noexcept;

template <class Call>
u32 guarded(Call call) noexcept {
  return guardedCall([](void* argument) { (*static_cast<Call*>(argument))(); }, &call);
}

}  // namespace corvix
