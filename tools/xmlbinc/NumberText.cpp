#include "tools/xmlbinc/NumberText.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace corvix::xmlbinc {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::optional<ParsedNumber> parseNumber(std::string_view text) {
  std::size_t i = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  const bool negative = text.substr(i).starts_with('-');
  if (negative || text.substr(i).starts_with('+')) ++i;
  int base = 10;
  if (text.substr(i).starts_with("0x") || text.substr(i).starts_with("0X")) {
    base = 16;
    i += 2;
  } else if (text.substr(i).starts_with('0')) {
    base = 8;
  }
  std::uint64_t magnitude = 0;
  const char* const last = text.data() + text.size();
  const auto result = std::from_chars(text.data() + i, last, magnitude, base);
  if (result.ec == std::errc::invalid_argument) return std::nullopt;
  constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (result.ec == std::errc::result_out_of_range) magnitude = kLargest;
  const auto value = static_cast<std::int64_t>(std::min(magnitude, kLargest));
  return ParsedNumber{negative ? -value : value, static_cast<std::size_t>(result.ptr - text.data())};
}

bool isInteger(std::string_view text) {
  const auto number = parseNumber(text);
  return number && number->length == text.size() && number->value >= std::numeric_limits<std::int32_t>::min() &&
         number->value <= std::numeric_limits<std::int32_t>::max();
}

bool isFloat(std::string_view text) {
  if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
  if (text.empty() || (!isDigit(text[0]) && text[0] != '.')) return false;
  double value = 0;
  const char* const last = text.data() + text.size();
  const auto result = std::from_chars(text.data(), last, value);
  return result.ec != std::errc::invalid_argument && result.ptr == last;
}

}  // namespace corvix::xmlbinc
