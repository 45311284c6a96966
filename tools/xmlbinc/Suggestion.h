// "Did you mean": the known word that a mistyped one is closest to.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace corvix::xmlbinc {

/// The end of a message, "; did you mean \"X\"?", or nothing if no known word is near.
std::string suggestion(std::string_view word, std::span<const std::string_view> known);

/// One edit away from a known word, which it is not: a letter too many, missing, another, in the other case, or two in
/// the wrong order.
bool isMistyped(std::string_view word, std::span<const std::string_view> known);

}  // namespace corvix::xmlbinc
