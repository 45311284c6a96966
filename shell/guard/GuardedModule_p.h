// Runs a module's code, which may throw and may crash.
#pragma once

#include "shell/guard/GuardedCall_p.h"
#include "shell/guard/Thrown_p.h"

namespace corvix {

struct GuardedOutcome {
  u32 fault = 0;                       // the system's code of the exception that ended it
  std::optional<std::wstring> thrown;  // what a C++ exception that ended it says
};

template <class Call>
GuardedOutcome guardedFromAll(Call call) noexcept {
  GuardedOutcome outcome;
  outcome.fault = guarded([&]() noexcept {
    try {
      outcome.thrown = thrownBy(call);
    } catch (...) {
      outcome.thrown.emplace();  // there is no memory for what it says
    }
  });
  return outcome;
}

// What a code means: "an access violation (0xC0000005)".
std::wstring faultText(u32 code);

}  // namespace corvix
