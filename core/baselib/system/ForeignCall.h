// Calls into foreign code: a listener's handler, a target, a task, a timer's callback, a destructor that somebody left.
// One rule for all of them: what leaves it is caught at that call, named in the log with its module and the place, and
// counts as the result 0; whoever called goes on with the next. An SException* is not freed: it belongs to the place
// that throws.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

// Inside a catch block: the line in the log. `code` is any address in the module of what threw, `place` says as what it
// was called. [any thread]
CORVIX_API void logThrown(const void* code, const wchar_t* place) noexcept;

// An address in the module of an object's class. To be taken before the call: the object may be gone behind it.
inline const void* codeOf(const void* object) noexcept { return *static_cast<const void* const*>(object); }
template <class Result, class... Parameter>
const void* codeOf(Result (*function)(Parameter...)) noexcept {
  return reinterpret_cast<const void*>(function);
}

// What `call` returns, or 0, false, null.
template <class Call>
auto callForeign(const void* code, const wchar_t* place, Call call) noexcept -> decltype(call()) {
  using Result = decltype(call());
  try {
    return call();
  } catch (...) {
    logThrown(code, place);
  }
  return Result();
}

}  // namespace corvix
