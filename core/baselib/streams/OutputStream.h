// BOutputStream: a stream to write to.
#pragma once

#include "core/baselib/streams/Stream.h"

namespace corvix {

class CORVIX_API BOutputStream : public virtual BStream {
  CORVIX_IDENTITY(BOutputStream, 0xFB81EC10, 0x4A896233, 0x83B7C78C, 0xEE9220AC, BStream)

 public:
  // Writes up to `count` bytes and moves behind them; what was written is with its receiver when this
  // returns. Returns how many: fewer when the receiver has no more room (a full disk, a limit), 0 after a
  // failure or when the stream is closed.
  virtual u32 write(const void* buffer, u32 count) = 0;

  // `write` of one byte: 1 or 0.
  virtual u32 writeByte(u8 byte);
};

}  // namespace corvix
