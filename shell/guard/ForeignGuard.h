// callGuarded: calls code of another module that may throw and may crash, and comes back. For who holds foreign objects
// in the middle of a healthy program and can do without them: after false they are to be let alone. [any thread]
#pragma once

#include "core/baselib/text/WideString.h"

namespace corvix {

// True when `function` returned. False when something left it: it is in the log then with the module of `code`, any
// address in it, and `place`; `reason`, if it is not null, says it to a user ("an access violation (0xC0000005)"). What
// the function was doing is left as it was, locks included.
CORVIX_API bool callGuarded(const void* code, const wchar_t* place, void (*function)(void* argument), void* argument,
                            WideString* reason) noexcept;

template <class Call>
bool callGuarded(const void* code, const wchar_t* place, Call call, WideString* reason = nullptr) noexcept {
  return callGuarded(
      code, place, [](void* argument) { (*static_cast<Call*>(argument))(); }, &call, reason);
}

}  // namespace corvix
