#include "core/baselib/identity/StypeInfo.h"

namespace corvix {

namespace {

// A cursor over the text. Numbers are read by hand: the C library's scanners differ in what they make of
// values above 0x7FFFFFFF.
class Scanner {
 public:
  Scanner(const wchar_t* text, std::size_t length) noexcept : at_(text), end_(text + length) {}

  bool comma() noexcept { return at_ != end_ && *at_ == L',' && (++at_, true); }

  std::optional<u32> number() noexcept {
    while (at_ != end_ && isBlank(*at_)) ++at_;
    const bool negative = at_ != end_ && *at_ == L'-';
    if (at_ != end_ && (*at_ == L'-' || *at_ == L'+')) ++at_;
    const u32 base = detectBase();
    u32 value = 0;
    const wchar_t* const digits = at_;
    for (u32 digit = 0; at_ != end_ && (digit = digitOf(*at_)) < base; ++at_) value = value * base + digit;
    if (at_ == digits) return std::nullopt;
    return negative ? 0u - value : value;
  }

 private:
  static bool isBlank(wchar_t c) noexcept { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

  static u32 digitOf(wchar_t c) noexcept {
    if (c >= L'0' && c <= L'9') return static_cast<u32>(c - L'0');
    if (c >= L'a' && c <= L'f') return static_cast<u32>(c - L'a') + 10;
    if (c >= L'A' && c <= L'F') return static_cast<u32>(c - L'A') + 10;
    return 16;
  }

  // Steps over "0x"; the "0" of an octal number is left, it is a digit of its own.
  u32 detectBase() noexcept {
    if (at_ == end_ || *at_ != L'0') return 10;
    if (at_ + 1 == end_ || (at_[1] != L'x' && at_[1] != L'X')) return 8;
    at_ += 2;
    return 16;
  }

  const wchar_t* at_;
  const wchar_t* end_;
};

}  // namespace

std::optional<ClassWords> parseClassWords(const wchar_t* text, std::size_t length) noexcept {
  Scanner scanner(text, length);
  u32 words[4];
  for (u32 i = 0; i < 4; ++i) {
    if (i && !scanner.comma()) return std::nullopt;
    const std::optional<u32> word = scanner.number();
    if (!word) return std::nullopt;
    words[i] = *word;
  }
  return ClassWords{words[0], words[1], words[2], words[3]};
}

}  // namespace corvix
