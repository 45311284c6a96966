// Numbers as the framework reads them from descriptors: blanks skipped, a sign, "0x" for hexadecimal, a leading 0
// for octal, else decimal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace corvix::xmlbinc {

struct ParsedNumber {
  std::int64_t value;  ///< the nearest there is, if the text's is beyond it
  std::size_t length;  ///< characters read, blanks before included
};

/// None if no number begins here. What follows the number is left unread.
std::optional<ParsedNumber> parseNumber(std::string_view text);

/// A signed 32-bit number and nothing else.
bool isInteger(std::string_view text);

/// Optional sign, digits, decimal point, exponent, and nothing else.
bool isFloat(std::string_view text);

}  // namespace corvix::xmlbinc
