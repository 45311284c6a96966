// Runs a module's code, which may throw and may crash.
#pragma once

#include "core/baselib/system/ForeignCall_p.h"
#include "shell/guard/GuardedCall_p.h"

#include <optional>

namespace corvix {

// Inside a catch block: what the exception says, or nothing when there is no memory for it.
inline std::wstring textOfThrownIfItCan() noexcept {
  try {
    return textOfThrown();
  } catch (...) {
    return {};
  }
}

struct GuardedOutcome {
  std::optional<u32> fault;            // the system's code of the exception that ended it
  std::optional<std::wstring> thrown;  // what a C++ exception that ended it says
};

template <class Call>
GuardedOutcome guardedFromAll(Call call) noexcept {
  GuardedOutcome outcome;
  outcome.fault = guarded([&]() noexcept {
    try {
      call();
    } catch (...) {
      outcome.thrown.emplace(textOfThrownIfItCan());
    }
  });
  return outcome;
}

// What a code means: "an access violation (0xC0000005)".
std::wstring faultText(u32 code);

}  // namespace corvix
