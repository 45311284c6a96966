// Runs a module's code, which may throw and may crash.
#pragma once

#include "core/baselib/system/ForeignCall_p.h"
#include "shell/guard/GuardedCall_p.h"

#include <optional>
#include <utility>

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
  // Makes the call. Written in place: what nearly always says nothing is not copied about.
  template <class Call>
  explicit GuardedOutcome(Call call) noexcept
      : fault(guarded([this, call = std::move(call)]() mutable noexcept {
          try {
            call();
          } catch (...) {
            thrown.emplace(textOfThrownIfItCan());
          }
        })) {}

  std::optional<std::wstring> thrown;  // what a C++ exception that ended it says
  std::optional<u32> fault;            // the system's code of the exception that ended it
};

template <class Call>
GuardedOutcome guardedFromAll(Call call) noexcept {
  return GuardedOutcome(std::move(call));
}

// What a code means: "an access violation (0xC0000005)".
std::wstring faultText(u32 code);

}  // namespace corvix
