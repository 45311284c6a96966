// BRAInputStream: a stream to read from at any position.
#pragma once

#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/RandomAccess.h"

namespace corvix {

class CORVIX_API BRAInputStream : public BInputStream, public IBRAStream {
  CORVIX_IDENTITY(BRAInputStream, 0x42FBB5BD, 0x4F63F413, 0xA235715E, 0x2B558703, BInputStream, IBRAStream)

 public:
  // A second reader of the same bytes with a position of its own, 0 at first; owned by the caller. Null for a
  // stream that cannot be read twice.
  virtual BRAInputStream* clone() { return nullptr; }

  // Moves the position only: never past 32 bits, possibly past the end. 0 if that fails, or if a limit lies behind
  // the position.
  u32 skip(u32 count) override;

  // Any number of steps, down to 0.
  u32 unreadByte() override;
};

}  // namespace corvix
