#include "core/suppliers/decoding/PackParams.h"

namespace corvix {

namespace {

constexpr u64 kLargestRow = u64{16} << 20;

constexpr struct {
  std::wstring_view name;
  std::wstring_view shortName;
  PackMethod method;
} kMethods[] = {
    {L"FlateDecode", L"Fl", PackMethod::Flate},         {L"LZWDecode", L"LZW", PackMethod::Lzw},
    {L"RunLengthDecode", L"RL", PackMethod::RunLength}, {L"ASCIIHexDecode", L"AHx", PackMethod::AsciiHex},
    {L"ASCII85Decode", L"A85", PackMethod::Ascii85},
};

}  // namespace

u32 PackParams::rowBytes() const noexcept {
  const bool areBits =
      bitsPerComponent >= 1 && bitsPerComponent <= 16 && (bitsPerComponent & (bitsPerComponent - 1)) == 0;
  if (!areBits || colors < 1 || colors > 32 || columns < 1) return 0;
  const u64 bytes = (static_cast<u64>(columns) * static_cast<u64>(colors * bitsPerComponent) + 7) / 8;
  return bytes <= kLargestRow ? static_cast<u32>(bytes) : 0;
}

bool PackParams::setMethod(std::wstring_view name) noexcept {
  for (const auto& row : kMethods) {
    if (name != row.name && name != row.shortName) continue;
    method = row.method;
    return true;
  }
  return false;
}

}  // namespace corvix
