#include "core/baselib/streams/RandomAccessInputStream.h"

#include <algorithm>

namespace corvix {

u32 BRAInputStream::skip(u32 count) {
  const u32 position = getPosition();
  return seek(position + std::min(count, 0xFFFFFFFF - position)) ? getPosition() - position : 0;
}

u32 BRAInputStream::unreadByte() {
  const u32 position = getPosition();
  return position > 0 && seek(position - 1) ? position - 1 : position;
}

}  // namespace corvix
