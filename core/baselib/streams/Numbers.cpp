#include "core/baselib/streams/Numbers.h"

namespace corvix {

namespace {

template <u32 kBytes>
bool writeNumber(BOutputStream& stream, u32 value, ByteOrder order) {
  u8 bytes[kBytes];
  for (u32 i = 0; i < kBytes; ++i)
    bytes[i] = static_cast<u8>(value >> 8 * (order == ByteOrder::Little ? i : kBytes - 1 - i));
  return stream.write(bytes, kBytes) == kBytes;
}

}  // namespace

bool readU16(BInputStream& stream, u16& value, ByteOrder order) {
  u8 bytes[2];
  if (readFully(stream, bytes, 2) != 2) return false;
  value = u16At(bytes, order);
  return true;
}

bool readU32(BInputStream& stream, u32& value, ByteOrder order) {
  u8 bytes[4];
  if (readFully(stream, bytes, 4) != 4) return false;
  value = u32At(bytes, order);
  return true;
}

bool writeU16(BOutputStream& stream, u16 value, ByteOrder order) { return writeNumber<2>(stream, value, order); }

bool writeU32(BOutputStream& stream, u32 value, ByteOrder order) { return writeNumber<4>(stream, value, order); }

}  // namespace corvix
