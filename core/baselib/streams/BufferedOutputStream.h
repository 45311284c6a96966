// BBufferedOutputStream: gathers small writes before another stream, so that a byte costs no call of the system.
// What was written is with the receiver after `flush`, `seek`, `setSize` or `close`, not before: ask `flush` whether
// all of it arrived, before you let the stream go.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/OutputStream.h"
#include "core/baselib/streams/RandomAccess.h"
#include "core/baselib/streams/ResizableStream.h"

namespace corvix {

class CORVIX_API BBufferedOutputStream final : public BOutputStream, public IBRAStream, public IBResizableStream {
  CORVIX_IDENTITY(BBufferedOutputStream, 0x3E81A5F2, 0x4D60C79B, 0xB24E0D38, 0x61F7298C, BOutputStream, IBRAStream,
                  IBResizableStream)

 public:
  static constexpr u32 kDefaultBytes = 16 * 1024;

  // `bufferBytes` are gathered; 0 counts as 1. Nobody else writes to the receiver meanwhile. Closed without a receiver.
  // Throws std::bad_alloc.
  explicit BBufferedOutputStream(Ref<BOutputStream> receiver, u32 bufferBytes = kDefaultBytes);

  // Flushes, and lets the receiver go; it stays open. What the receiver throws goes no further than the log here, but
  // out of the other operations; what had arrived is not written again.
  ~BBufferedOutputStream() override;
  void close() override;

  bool isOpen() const noexcept override { return receiver_ && receiver_->isOpen(); }
  u32 getPosition() const noexcept override;

  // The receiver's, with what waits here.
  u32 size() const noexcept override;

  // Whatever is larger than the buffer goes straight to the receiver. Fewer bytes, or 0, when the receiver has no more
  // room; what it did not take then stays here, and `flush` tries it again.
  u32 write(const void* buffer, u32 count) override;
  u32 writeByte(u8 byte) override {
    if (used_ == most_) return writeThrough(byte);
    buffer_[used_++] = byte;
    return 1;
  }

  // Hands on what waits here; false if the receiver did not take all of it.
  bool flush();

  // False where the receiver cannot, or something is left after a flush.
  bool seek(u32 position) override;
  bool setSize(u32 size) override;

 private:
  u32 writeThrough(u8 byte);
  u32 gather(const u8* bytes, u32 count) noexcept;

  Ref<BOutputStream> receiver_;
  HeapBuffer<u8> buffer_;
  u32 used_ = 0;
  u32 most_ = 0;  // 0 when closed
};

}  // namespace corvix
