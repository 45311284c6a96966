// BChunkInputStream: random access to a stream that can only be read forward, or slowly. Pages of 4096 bytes
// are copied into temporary storage when they are first needed and served from there ever after.
//
// A source that has IBRAStream is sought to each page. One that has not, or whose seek fails, is read on to the
// page, and what lies between is kept too; what it has delivered before it came here cannot be had then.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/streams/TempStorage.h"

#include <algorithm>

namespace corvix {

class CORVIX_API BChunkInputStream final : public BRAInputStream {
  CORVIX_IDENTITY(BChunkInputStream, 0x0C40AA32, 0x4A81C3F0, 0xAE325234, 0x7E1CD1EF, BRAInputStream)

 public:
  // The source's size is asked once, here; kUnknownSize is fine. Nobody else moves the source from now on.
  // Closed if there is no temporary storage to be had.
  explicit BChunkInputStream(Ref<BInputStream> source);
  ~BChunkInputStream() override;

  bool isOpen() const noexcept override { return storage_.isOpen() && source_; }

  // Lets the source go. Throws as BTempStorage::close does.
  void close() override;

  u32 getPosition() const noexcept override { return storage_.getPosition(); }

  // The source's. Where the source ends before that, this stream ends too, and says so from then on.
  u32 size() const noexcept override { return isOpen() ? size_ : 0; }

  // First loads the missing pages from that of the position to that of position + count: a read that ends at
  // the very end of a page loads the next one too. When the source fails, what came before the failure is
  // read, and the missing page is asked for again by the next read.
  u32 read(void* buffer, u32 count) override;
  int readByte() override;
  u32 unreadByte() override;
  u32 skip(u32 count) override;

  // Loads as a read of one byte there does. The end is the furthest.
  bool seek(u32 position) override;

  bool isPageLoaded(u32 page) const noexcept;

  // One bit a page, rounded up; bytes.
  u32 pageMapSize() const noexcept { return isOpen() ? (size_ >> 15) + 1 : 0; }

 private:
  static constexpr u32 kPageBytes = 4096;
  static constexpr u32 kPageShift = 12;

  u32 upToEnd(u32 position, u32 count) const noexcept {
    return position < size_ ? std::min(count, size_ - position) : 0;
  }
  u32 load(u32 position, u32 count);
  u32 loadFrom(u32 firstMissing, u32 position, u32 count);
  void loadPage(u32 page);
  bool copyPiece();
  bool store(const u8* bytes, u32 count);
  void setLoaded(u32 page) noexcept;
  void endAt(u32 size) noexcept;

  Ref<BInputStream> source_;
  u32 size_ = 0;
  HeapBuffer<u8> pageMap_;  // page 0 is the most significant bit of byte 0
  BTempStorage storage_;
  IBRAStream* randomSource_ = nullptr;
  u32 runStart_ = 0;  // [runStart_, runEnd_) was copied last; the source goes on at runEnd_
  u32 runEnd_ = 0;
  u32 sureBytes_ = 0;  // so many single bytes from the position on need no page to be loaded
};

}  // namespace corvix
