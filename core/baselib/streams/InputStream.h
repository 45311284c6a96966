// BInputStream: a stream to read from, forward. A class of your own needs `read`, `unreadByte` and
// `getPosition`; what decodes or fetches piece by piece takes BForwardInputStream and one operation.
#pragma once

#include "core/baselib/streams/Stream.h"

namespace corvix {

class CORVIX_API BInputStream : public virtual BStream {
  CORVIX_IDENTITY(BInputStream, 0xF516912B, 0x4B503F0C, 0x9F0115F7, 0x9E286D81, BStream)

 public:
  // Reads up to `count` bytes and moves behind them. Fewer at the end, or when the source has no more at the
  // moment: `readFully` asks again. 0: the end, a failure, a closed stream, or a count of 0. The buffer behind
  // what was read is left alone.
  virtual u32 read(void* buffer, u32 count) = 0;

  // The next byte, 0 to 255, or -1. Costs no call of the system a byte in the library's streams.
  virtual int readByte();

  // Steps back one byte, so that the same byte is read again, and returns the new position. At position 0
  // nothing happens. One step is always possible after a read; more are in streams that also are IBRAStream.
  virtual u32 unreadByte() = 0;

  // Moves forward over up to `count` bytes; returns how many. A stream of random access may go past its end.
  virtual u32 skip(u32 count);

  // How far reading can get. Counted from the beginning and not from the position, deliberately: what is
  // left is available() - getPosition(). The same as `size` unless the class says otherwise.
  virtual u32 available() const noexcept { return size(); }

  // True if there is nothing to read at the position. A forward stream may fetch in order to tell: where
  // `available` is unknown, a byte is read and stepped back over.
  virtual bool atEnd();
};

// Asks until all `count` bytes have come or none come any more; returns how many did.
CORVIX_API u32 readFully(BInputStream& stream, void* buffer, u32 count);

}  // namespace corvix
