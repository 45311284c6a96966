#include "core/suppliers/decoding/Decoders_p.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

constexpr bool isBlank(int c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r') || c == 0; }

constexpr int hexValue(int c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  const int lower = c | 0x20;
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// What is wrong with a byte, or with the end of the data, where something else must stand.
constexpr PackFault faultAt(int c) noexcept { return c < 0 ? PackFault::Truncated : PackFault::Damaged; }

}  // namespace

u32 RunLengthInputStream::decode(u8* buffer, u32 count) {
  u32 got = 0;
  while (got < count && !isDone_) {
    if (left_ == 0) {
      const int length = nextByte();
      byte_ = length > 128 ? nextByte() : -1;
      if (length < 0 || (length > 128 && byte_ < 0)) fail(PackFault::Truncated);
      isDone_ = length < 0 || length == 128 || (length > 128 && byte_ < 0);
      if (isDone_) break;
      left_ = static_cast<u32>(length > 128 ? 257 - length : length + 1);
    }
    u32 piece = std::min(left_, count - got);
    if (byte_ >= 0) {
      std::memset(buffer + got, byte_, piece);
    } else if (refill()) {
      piece = std::min(piece, end_ - next_);
      std::memcpy(buffer + got, input_.get() + next_, piece);
      next_ += piece;
    } else {
      fail(PackFault::Truncated);
      isDone_ = true;
      break;
    }
    left_ -= piece;
    got += piece;
  }
  return got;
}

// The value of the next digit; -1 at the end, whichever it is.
int AsciiHexInputStream::nextDigit() {
  if (isDone_) return -1;
  int c = nextByte();
  while (c >= 0 && isBlank(c)) c = nextByte();
  const int value = hexValue(c);
  if (value >= 0) return value;
  isDone_ = true;
  if (c != '>') fail(c < 0 ? PackFault::Truncated : PackFault::Damaged);
  return -1;
}

u32 AsciiHexInputStream::decode(u8* buffer, u32 count) {
  u32 got = 0;
  while (got < count) {
    const int high = nextDigit();
    if (high < 0) break;
    const int low = nextDigit();
    buffer[got++] = static_cast<u8>(high << 4 | (low < 0 ? 0 : low));  // a single digit is followed by a 0
  }
  return got;
}

u32 Ascii85InputStream::decode(u8* buffer, u32 count) {
  u32 got = 0;
  for (;;) {
    const u32 piece = std::min(count - got, groupEnd_ - groupNext_);
    std::memcpy(buffer + got, group_ + groupNext_, piece);
    groupNext_ += piece;
    got += piece;
    if (got == count || isDone_) return got;
    nextGroup();
  }
}

void Ascii85InputStream::finish(PackFault fault) noexcept {
  isDone_ = true;
  if (fault != PackFault::None) fail(fault);
}

// Lines may be broken anywhere, also between the two characters of the end.
int Ascii85InputStream::nextInk() {
  int c = nextByte();
  while (c >= 0 && isBlank(c)) c = nextByte();
  return c;
}

void Ascii85InputStream::nextGroup() {
  groupNext_ = groupEnd_ = 0;
  u64 value = 0;
  u32 digits = 0;
  while (digits < 5 && !isDone_) {
    const int c = nextInk();
    const bool isFirst = !std::exchange(hasStarted_, true);
    if (isFirst && c == '<') {
      const int next = nextInk();  // "<~" before the data is let pass
      if (next != '~') finish(faultAt(next));
    } else if (c >= '!' && c <= 'u') {
      value = value * 85 + static_cast<u32>(c - '!');
      ++digits;
    } else if (c == 'z' && digits == 0) {
      digits = 5;  // four zeros
    } else if (c == '~') {
      const int next = nextInk();
      finish(next == '>' ? PackFault::None : faultAt(next));
    } else {
      finish(faultAt(c));
    }
  }
  if (digits == 0) return;
  // A last group of fewer digits stands for one byte less than it has digits.
  for (u32 i = digits; i < 5; ++i) value = value * 85 + 84;
  if (digits == 1 || value > 0xFFFFFFFF) {
    finish(PackFault::Damaged);
    return;
  }
  for (u32 i = 0; i < 4; ++i) group_[i] = static_cast<u8>(value >> (24 - 8 * i));
  groupEnd_ = digits - 1;
}

}  // namespace corvix
