// Numbers of 16 and 32 bits in streams and in memory, in either order of their bytes.
#pragma once

#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/OutputStream.h"

namespace corvix {

enum class ByteOrder {
  Little,  // the lowest byte first
  Big,     // the highest byte first
};

constexpr u16 u16At(const u8* bytes, ByteOrder order) noexcept {
  return order == ByteOrder::Little ? static_cast<u16>(bytes[0] | bytes[1] << 8)
                                    : static_cast<u16>(bytes[1] | bytes[0] << 8);
}

constexpr u32 u32At(const u8* bytes, ByteOrder order) noexcept {
  const u32 first = u16At(bytes, order);
  const u32 second = u16At(bytes + 2, order);
  return order == ByteOrder::Little ? first | second << 16 : second | first << 16;
}

// False, and `value` as it was, when the stream ends before the number does; what came is read then.
CORVIX_API bool readU16(BInputStream& stream, u16& value, ByteOrder order);
CORVIX_API bool readU32(BInputStream& stream, u32& value, ByteOrder order);

// False when the stream does not take all of it.
CORVIX_API bool writeU16(BOutputStream& stream, u16 value, ByteOrder order);
CORVIX_API bool writeU32(BOutputStream& stream, u32 value, ByteOrder order);

}  // namespace corvix
