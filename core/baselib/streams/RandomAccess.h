// IBRAStream: random access, the second side of a stream whose position can be set. Readers and writers may
// have it.
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBRAStream : public IBTransportable {
  CORVIX_IDENTITY(IBRAStream, 0x7E8C9C69, 0x4AB92AD0, 0x856F8722, 0xAE7D0B1F, IBTransportable)

 public:
  // Sets the position, from the beginning. False leaves it where it was. A position past the end is no
  // failure: a stream with a limit goes to its limit, any other goes there, where reading gives 0 bytes and
  // writing first fills the gap with zeros.
  virtual bool seek(u32 position) = 0;
};

}  // namespace corvix
