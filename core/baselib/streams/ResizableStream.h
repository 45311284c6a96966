// IBResizableStream: a stream that can be cut to a length. Ask for it: query<IBResizableStream>(stream).
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBResizableStream : public IBTransportable {
  CORVIX_IDENTITY(IBResizableStream, 0x5D0B93E6, 0x4C7A2F18, 0x97E15AC3, 0x2B6FD084, IBTransportable)

 public:
  // Cuts the stream to `size` bytes, or lengthens it with zeros. The position stays where it is, also past the new
  // end. False, and nothing changes, if that cannot be done: no room, a limit, a closed stream.
  virtual bool setSize(u32 size) = 0;
};

}  // namespace corvix
