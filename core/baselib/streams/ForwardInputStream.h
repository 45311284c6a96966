// BForwardInputStream: base of readers whose bytes come one way, from a decoder, a pipe, a network. A class of
// your own tells how to fetch more; reading byte by byte, stepping back, skipping and the position are done
// here.
//
//   class Upper : public BForwardInputStream {
//     CORVIX_IDENTITY(Upper, ..., BForwardInputStream)
//     u32 fetch(void* buffer, u32 count) override;
//   };
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/streams/InputStream.h"

namespace corvix {

class CORVIX_API BForwardInputStream : public BInputStream {
  CORVIX_IDENTITY(BForwardInputStream, 0xEECB2442, 0x4E64BB5A, 0xA4ACCE92, 0xBDC31131, BInputStream)

 public:
  BForwardInputStream() noexcept = default;
  ~BForwardInputStream() override;

  u32 getPosition() const noexcept override { return fetched_ - (end_ - next_); }
  u32 read(void* buffer, u32 count) override;
  int readByte() override;

  // One step after a read, also at the end; more as far as the last fetched piece goes.
  u32 unreadByte() override;

  // Fetches if nothing is left of the last piece.
  bool atEnd() override;

 protected:
  // Up to `count` bytes into `buffer`, at least one; 0 at the end or after a failure. Called again after a 0
  // when the reader asks again. `count` is never 0. The stream ends after 4 GiB - 1 bytes, whatever comes.
  virtual u32 fetch(void* buffer, u32 count) = 0;

  // For `close` and for starting anew: forgets what was fetched, the position becomes `position`.
  void discard(u32 position = 0) noexcept;

 private:
  bool refill();
  u32 fetchWithin(void* buffer, u32 count);

  HeapBuffer<u8> piece_;  // [0, end_) was fetched last, [next_, end_) is not read yet
  u32 next_ = 0;
  u32 end_ = 0;
  u32 fetched_ = 0;  // position behind the piece
};

}  // namespace corvix
