// C++ exceptions that leave the code of a plug-in, where somebody is to be told what they say.
#pragma once

#include "core/baselib/system/ForeignCall_p.h"

#include <optional>

namespace corvix {

// Runs a module's code: the text of an exception that leaves it, or nothing.
template <class Call>
std::optional<std::wstring> thrownBy(Call call) {
  try {
    call();
  } catch (...) {
    return textOfThrown();
  }
  return std::nullopt;
}

}  // namespace corvix
