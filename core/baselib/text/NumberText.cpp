#include "core/baselib/text/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace corvix::text {

namespace {

bool isBlank(wchar_t c) noexcept { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool isDigit(wchar_t c) noexcept { return c >= L'0' && c <= L'9'; }

u32 digitOf(wchar_t c) noexcept {
  if (isDigit(c)) return static_cast<u32>(c - L'0');
  if (c >= L'a' && c <= L'f') return static_cast<u32>(c - L'a') + 10;
  if (c >= L'A' && c <= L'F') return static_cast<u32>(c - L'A') + 10;
  return 16;
}

// Steps over blanks and a sign; true for a minus.
bool stepOverSign(const wchar_t*& at, const wchar_t* end) noexcept {
  while (at != end && isBlank(*at)) ++at;
  return at != end && (*at == L'-' || *at == L'+') && *at++ == L'-';
}

// Steps over "0x"; the "0" of an octal number is left, it is a digit of its own.
u32 stepOverBase(const wchar_t*& at, const wchar_t* end) noexcept {
  if (at == end || *at != L'0') return 10;
  if (at + 1 == end || (at[1] != L'x' && at[1] != L'X')) return 8;
  at += 2;
  return 16;
}

const wchar_t* skipDigits(const wchar_t* at, const wchar_t* end) noexcept {
  while (at != end && isDigit(*at)) ++at;
  return at;
}

// Where the number that begins at `at` ends; `at` itself when there is none.
const wchar_t* endOfFloat(const wchar_t* at, const wchar_t* end) noexcept {
  const wchar_t* next = skipDigits(at, end);
  auto digits = next - at;
  if (next != end && *next == L'.') {
    const wchar_t* const fraction = next + 1;
    next = skipDigits(fraction, end);
    digits += next - fraction;
  }
  if (!digits) return at;
  if (next == end || (*next != L'e' && *next != L'E')) return next;
  const wchar_t* exponent = next + 1;
  if (exponent != end && (*exponent == L'-' || *exponent == L'+')) ++exponent;
  const wchar_t* const behind = skipDigits(exponent, end);
  return behind == exponent ? next : behind;
}

// A number that does not fit: infinite or too near to zero. Only the place of its first digit other than 0
// and the exponent can say which.
bool isHuge(std::string_view number) noexcept {
  const std::size_t exponentAt = std::min(number.find_first_of("eE"), number.size());
  const std::size_t point = std::min(number.find('.'), exponentAt);
  const std::size_t first = number.find_first_of("123456789");
  const i64 place = static_cast<i64>(point) - static_cast<i64>(first);
  const bool isNegative = number.find('-', exponentAt) != std::string_view::npos;
  i64 exponent = 0;
  for (const char c : number.substr(exponentAt)) {
    if (c >= '0' && c <= '9') exponent = std::min<i64>(exponent * 10 + (c - '0'), i64{1} << 40);
  }
  return place + (isNegative ? -exponent : exponent) > 0;
}

}  // namespace

ScannedInteger scanInteger(std::wstring_view text) noexcept {
  const wchar_t* at = text.data();
  const wchar_t* const end = at + text.size();
  ScannedInteger result;
  result.isNegative = stepOverSign(at, end);
  const u32 base = stepOverBase(at, end);
  for (u32 digit = 0; at != end && (digit = digitOf(*at)) < base; result.end = ++at) {
    const u64 value = u64{result.low32} * base + digit;
    result.isAbove32 = result.isAbove32 || value >> 32;
    result.low32 = static_cast<u32>(value);
  }
  return result;
}

i32 readInteger(std::wstring_view text) noexcept {
  constexpr i64 kMost = std::numeric_limits<i32>::max();
  const ScannedInteger scanned = scanInteger(text);
  const i64 magnitude = scanned.isAbove32 ? i64{1} << 32 : i64{scanned.low32};
  return static_cast<i32>(scanned.isNegative ? std::max(-magnitude, -kMost - 1) : std::min(magnitude, kMost));
}

double readFloat(std::wstring_view text) noexcept {
  const wchar_t* at = text.data();
  const wchar_t* const end = at + text.size();
  const bool isNegative = stepOverSign(at, end);
  const wchar_t* const behind = endOfFloat(at, end);
  std::string digits;
  digits.reserve(static_cast<std::size_t>(behind - at));
  std::transform(at, behind, std::back_inserter(digits), [](wchar_t c) { return static_cast<char>(c); });
  double number = 0.0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), number).ec == std::errc::result_out_of_range)
    number = isHuge(digits) ? std::numeric_limits<double>::infinity() : 0.0;
  return isNegative ? -number : number;
}

std::size_t writeFloat(double number, wchar_t (&text)[kFloatLength + 1]) noexcept {
  char digits[kFloatLength];
  std::string_view written = "0";
  if (std::isinf(number)) {
    written = number < 0 ? "-1e999" : "1e999";  // reads as infinite again
  } else if (!std::isnan(number)) {
    written = {digits, static_cast<std::size_t>(std::to_chars(digits, std::end(digits), number).ptr - digits)};
  }
  *std::transform(written.begin(), written.end(), text, [](char c) { return static_cast<wchar_t>(c); }) = 0;
  return written.size();
}

}  // namespace corvix::text
