// Numbers in texts, read as far as they go: what stands behind a number is ignored, a text without one is 0.
// Blanks and a sign may stand before it. The locale has no say. [any thread]
#pragma once

#include "core/baselib/Api.h"

#include <string_view>

namespace corvix::text {

// What stood at the beginning of a text.
struct ScannedInteger {
  u32 low32 = 0;           // of the magnitude
  bool isAbove32 = false;  // the magnitude has more bits
  bool isNegative = false;
  const wchar_t* end = nullptr;  // behind the last digit; null when there is no digit
};

// Decimal, hexadecimal after "0x", octal after "0".
CORVIX_API ScannedInteger scanInteger(std::wstring_view text) noexcept;

// The same as a signed number; what is too large becomes the nearest limit.
CORVIX_API i32 readInteger(std::wstring_view text) noexcept;

// Decimal digits, a point, an exponent. What is too large becomes infinite.
CORVIX_API double readFloat(std::wstring_view text) noexcept;

// The shortest text that `readFloat` reads as the same number; at most `kFloatLength` units and a zero, whose
// count without the zero is returned. What is no number reads as 0.
constexpr std::size_t kFloatLength = 31;
CORVIX_API std::size_t writeFloat(double number, wchar_t (&text)[kFloatLength + 1]) noexcept;

}  // namespace corvix::text
