#include "core/suppliers/decoding/Decoders_p.h"

#include <algorithm>
#include <cstring>

namespace corvix {

u32 LzwInputStream::decode(u8* buffer, u32 count) {
  if (!table_) table_.allocate(kCodes);
  u32 got = 0;
  for (;;) {
    const u32 piece = std::min(count - got, textEnd_ - textNext_);
    std::memcpy(buffer + got, text_ + textNext_, piece);
    textNext_ += piece;
    got += piece;
    if (got == count || isDone_) return got;
    const u32 code = nextCode();
    if (code == kClear) {
      known_ = kEnd + 1;
      width_ = 9;
      previous_ = kNoCode;
    } else if (code == kNoCode || code == kEnd || !expand(code)) {
      isDone_ = true;
    }
  }
}

u32 LzwInputStream::nextCode() {
  while (bitCount_ < width_) {
    const int byte = nextByte();
    if (byte < 0) {
      fail(PackFault::Truncated);
      return kNoCode;
    }
    bits_ = bits_ << 8 | static_cast<u32>(byte);
    bitCount_ += 8;
  }
  bitCount_ -= width_;
  return bits_ >> bitCount_ & ((1u << width_) - 1);
}

// Puts what the code stands for into the text, and makes a new code of the one before it.
bool LzwInputStream::expand(u32 code) {
  const bool isNew = code >= known_;  // it stands for what is just made
  if (isNew && (code > known_ || previous_ == kNoCode || known_ == kCodes)) {
    fail(PackFault::Damaged);
    return false;
  }
  if (previous_ != kNoCode && known_ < kCodes) {
    table_[known_] = {static_cast<u16>(previous_), static_cast<u16>(lengthOf(previous_) + 1), firstOf(previous_),
                      firstOf(isNew ? previous_ : code)};
    ++known_;
    if (known_ + early_ >= (1u << width_) && width_ < 12) ++width_;
  }
  previous_ = code;
  textNext_ = 0;
  textEnd_ = lengthOf(code);
  for (u32 at = textEnd_; at > 1; code = table_[code].prefix) text_[--at] = table_[code].last;
  text_[0] = static_cast<u8>(code);
  return true;
}

}  // namespace corvix
