// IBStream: what every stream is, whichever way its bytes go; what suppliers hand out. BStream: the counted
// base of the stream classes. Ask a stream for what it can do: query<BInputStream>(stream) and so on.
//
// Positions and sizes are bytes, 32 bits, counted from the stream's beginning. No stream raises or logs
// anything but where its class says so: what cannot be done is told by the result. A stream belongs to one
// thread at a time.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class CORVIX_API IBStream : public BSmartObject {
  CORVIX_IDENTITY(IBStream, 0xE7B721CC, 0x49BD4C2B, 0x976C16DF, 0x8CC7BCE2, BSmartObject)

 public:
  // A size that is not known in advance, or is more than 32 bits hold.
  static constexpr u32 kUnknownSize = 0xFFFFFFFF;

  // A closed stream reads and writes 0 bytes, does not move and has a size of 0.
  virtual bool isOpen() const noexcept = 0;

  // Gives back what the stream holds of the system or of other streams; the last `release` does so too.
  // Nothing happens if it is closed.
  virtual void close() = 0;

  // Where the next byte is read or written.
  virtual u32 getPosition() const noexcept = 0;

  // All that is in the stream, whatever the position; kUnknownSize if that cannot be told.
  virtual u32 size() const noexcept = 0;
};

// Inherited virtually by the readers and the writers, so that a stream may be both and is still one object
// with one count. The answers here are those of a stream that is always open and knows nothing of its end.
class CORVIX_API BStream : public IBStream {
  CORVIX_IDENTITY(BStream, 0x6E42A097, 0x4769D0D3, 0xA6A710C1, 0x3A668204, IBStream)

 public:
  bool isOpen() const noexcept override { return true; }
  void close() override {}
  u32 size() const noexcept override { return kUnknownSize; }
};

}  // namespace corvix
