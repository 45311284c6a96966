// PackParams: how a stream was packed: one method, and what it needs to be told. What is packed several times is
// unpacked by as many parameters, one after the other.
#pragma once

#include "core/baselib/objects/SmartObject.h"

#include <string_view>

namespace corvix {

enum class PackMethod {
  None,       // nothing but the predictor
  Flate,      // deflate within a zlib wrapper
  Lzw,        // codes of 9 to 12 bits, the most significant first
  RunLength,  // bytes below 128: so many and one more follow; above: 257 less so many times the next; 128: the end
  AsciiHex,   // up to ">"
  Ascii85,    // up to "~>"
};

class CORVIX_API PackParams : public BSmartObject {
  CORVIX_IDENTITY(PackParams, 0x5E0C97D2, 0x4B38A16F, 0x93D7F40A, 0xC82B65E1, BSmartObject)

 public:
  static constexpr i32 kNoPredictor = 1;
  static constexpr i32 kTiffPredictor = 2;  // each sample is the difference from the one to its left
  static constexpr i32 kPngPredictor = 10;  // 10 to 15: each row tells its own, whichever number stands here

  PackMethod method = PackMethod::None;
  i32 predictor = kNoPredictor;  // of image data, taken back after unpacking with Flate, Lzw or None
  i32 colors = 1;                // samples a pixel, 1 to 32
  i32 bitsPerComponent = 8;      // bits a sample: 1, 2, 4, 8 or 16
  i32 columns = 1;               // pixels a row, from 1; a row may have 16 MiB
  bool earlyChange = true;       // Lzw: codes grow one code earlier than they have to

  // Bytes of a row of samples; 0 if the numbers above are none that can be.
  u32 rowBytes() const noexcept;

  // The method's name in documents, or its short form: "FlateDecode", "Fl", "LZWDecode", "LZW", "RunLengthDecode",
  // "RL", "ASCIIHexDecode", "AHx", "ASCII85Decode", "A85". False for any other; nothing changes then.
  bool setMethod(std::wstring_view name) noexcept;
};

}  // namespace corvix
