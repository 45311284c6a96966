#include "core/baselib/streams/InputStream.h"

#include <algorithm>

namespace corvix {

int BInputStream::readByte() {
  u8 byte;
  return read(&byte, 1) == 1 ? byte : -1;
}

u32 BInputStream::skip(u32 count) {
  u8 dropped[4096];
  u32 skipped = 0;
  while (skipped < count) {
    const u32 got = read(dropped, std::min<u32>(count - skipped, sizeof dropped));
    if (got == 0) break;
    skipped += got;
  }
  return skipped;
}

// Where nobody knows the end, the next byte tells.
bool BInputStream::atEnd() {
  const u32 furthest = available();
  if (furthest != kUnknownSize) return getPosition() >= furthest;
  if (readByte() < 0) return true;
  unreadByte();
  return false;
}

u32 readFully(BInputStream& stream, void* buffer, u32 count) {
  u32 done = 0;
  while (done < count) {
    const u32 got = stream.read(static_cast<u8*>(buffer) + done, count - done);
    if (got == 0) break;
    done += got;
  }
  return done;
}

}  // namespace corvix
