// The small decoders; the table in DecoderTable.cpp makes them.
#pragma once

#include "core/suppliers/decoding/PackDecodeStream.h"

namespace corvix {

class LzwInputStream final : public PackDecodeStream {
  CORVIX_IDENTITY(LzwInputStream, 0x40E7B91C, 0x4D5A63F8, 0x9B20C7D5, 0x8AF1E364, PackDecodeStream)

 public:
  LzwInputStream(Ref<BInputStream> packed, bool earlyChange) noexcept
      : PackDecodeStream(std::move(packed)), early_(earlyChange ? 1 : 0) {}

 private:
  static constexpr u32 kClear = 256;
  static constexpr u32 kEnd = 257;
  static constexpr u32 kCodes = 4096;
  static constexpr u32 kNoCode = 0xFFFFFFFF;

  // What a code from 258 on stands for: what `prefix` stands for, and one byte more.
  struct Entry {
    u16 prefix;
    u16 length;
    u8 first;
    u8 last;
  };

  u32 decode(u8* buffer, u32 count) override;
  u32 nextCode();
  bool expand(u32 code);
  u32 lengthOf(u32 code) const noexcept { return code < kClear ? 1 : table_[code].length; }
  u8 firstOf(u32 code) const noexcept { return code < kClear ? static_cast<u8>(code) : table_[code].first; }

  u32 early_;
  u32 bits_ = 0;
  u32 bitCount_ = 0;
  u32 width_ = 9;
  u32 known_ = kEnd + 1;
  u32 previous_ = kNoCode;
  HeapBuffer<Entry> table_;
  bool isDone_ = false;
  u32 textNext_ = 0;  // text_[textNext_, textEnd_) is unpacked and not read
  u32 textEnd_ = 0;
  u8 text_[kCodes];
};

class RunLengthInputStream final : public PackDecodeStream {
  CORVIX_IDENTITY(RunLengthInputStream, 0x95D03AE7, 0x42F8B16C, 0xA3694E0B, 0x7C15F2D8, PackDecodeStream)

 public:
  explicit RunLengthInputStream(Ref<BInputStream> packed) noexcept : PackDecodeStream(std::move(packed)) {}

 private:
  u32 decode(u8* buffer, u32 count) override;

  u32 left_ = 0;   // bytes that the present run still has
  int byte_ = -1;  // what they are; -1: the next packed ones
  bool isDone_ = false;
};

class AsciiHexInputStream final : public PackDecodeStream {
  CORVIX_IDENTITY(AsciiHexInputStream, 0x2B86FC41, 0x4E93D70A, 0x85F12CB6, 0xD90A47E3, PackDecodeStream)

 public:
  explicit AsciiHexInputStream(Ref<BInputStream> packed) noexcept : PackDecodeStream(std::move(packed)) {}

 private:
  u32 decode(u8* buffer, u32 count) override;
  int nextDigit();

  bool isDone_ = false;
};

class Ascii85InputStream final : public PackDecodeStream {
  CORVIX_IDENTITY(Ascii85InputStream, 0xE17D50B9, 0x48C2F63A, 0x90ABD41E, 0x356C8F07, PackDecodeStream)

 public:
  explicit Ascii85InputStream(Ref<BInputStream> packed) noexcept : PackDecodeStream(std::move(packed)) {}

 private:
  u32 decode(u8* buffer, u32 count) override;
  void nextGroup();
  int nextInk();
  void finish(PackFault fault) noexcept;

  u8 group_[4];
  u32 groupNext_ = 0;
  u32 groupEnd_ = 0;
  bool hasStarted_ = false;
  bool isDone_ = false;
};

}  // namespace corvix
