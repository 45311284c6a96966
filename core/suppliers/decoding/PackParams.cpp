#include "core/suppliers/decoding/PackParams.h"

#include "core/suppliers/decoding/DecoderTable_p.h"

namespace corvix {

namespace {

constexpr u64 kLargestRow = u64{16} << 20;

}  // namespace

u32 PackParams::rowBytes() const noexcept {
  const bool areBits =
      bitsPerComponent >= 1 && bitsPerComponent <= 16 && (bitsPerComponent & (bitsPerComponent - 1)) == 0;
  if (!areBits || colors < 1 || colors > 32 || columns < 1) return 0;
  const u64 bytes = (static_cast<u64>(columns) * static_cast<u64>(colors * bitsPerComponent) + 7) / 8;
  return bytes <= kLargestRow ? static_cast<u32>(bytes) : 0;
}

bool PackParams::setMethod(std::wstring_view name) noexcept {
  const DecoderRow* const row = decoderNamed(name);
  if (row) method = row->method;
  return row != nullptr;
}

}  // namespace corvix
