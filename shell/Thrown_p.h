// C++ exceptions that leave the code of a plug-in.
#pragma once

#include <optional>
#include <string>

namespace corvix {

// Inside a catch block: what the exception says.
std::wstring textOfThrown();

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
