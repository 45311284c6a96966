#include "core/baselib/streams/RandomAccessInputStream.h"

#include <algorithm>

namespace corvix {

u32 BRAInputStream::skip(u32 count) {
  const u32 position = getPosition();
  if (!seek(position + std::min(count, 0xFFFFFFFF - position))) return 0;
  return getPosition() - std::min(position, getPosition());  // a limit may lie behind
}

u32 BRAInputStream::unreadByte() {
  const u32 position = getPosition();
  return position > 0 && seek(position - 1) ? getPosition() : position;
}

}  // namespace corvix
