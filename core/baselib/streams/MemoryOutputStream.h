// BMemoryOutputStream: writes into a block of memory that grows.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/streams/OutputStream.h"
#include "core/baselib/streams/RandomAccess.h"
#include "core/baselib/streams/ResizableStream.h"

namespace corvix {

class CORVIX_API BMemoryOutputStream final : public BOutputStream, public IBRAStream, public IBResizableStream {
  CORVIX_IDENTITY(BMemoryOutputStream, 0x58E90974, 0x46FD2EEB, 0x8005EF20, 0x9EA4E634, BOutputStream, IBRAStream,
                  IBResizableStream)

 public:
  // `mostBytes`: writing stops there, as a disk that is full.
  explicit BMemoryOutputStream(u32 mostBytes = kUnknownSize) noexcept : mostBytes_(mostBytes) {}
  ~BMemoryOutputStream() override;

  u32 getPosition() const noexcept override { return position_; }
  u32 size() const noexcept override { return size_; }
  // Nothing is written if the block cannot grow.
  u32 write(const void* buffer, u32 count) override;
  bool seek(u32 position) override;
  bool setSize(u32 size) override;

  // What was written; null when there is nothing. Valid until the next write.
  const u8* data() const noexcept { return data_.get(); }

  // Hands the block to the caller, who frees it with _sfree; the stream is empty then.
  [[nodiscard]] u8* detach() noexcept;

 private:
  bool reserve(u32 size) noexcept;

  HeapBuffer<u8> data_;
  u32 position_ = 0;
  u32 size_ = 0;
  u32 capacity_ = 0;
  u32 mostBytes_;
};

}  // namespace corvix
