// RangedFile: a handle on a file seen as a stream, from a base offset up to a limit, with a position of its
// own. The engine of the streams over files.
//
// Small reads are served from one page that is read ahead. The page is dropped as soon as any stream of the
// process has written to the same file, so that a reader sees at once what a writer wrote: every file has a
// count of writes, shared by all handles on it, and the page remembers the count that it was read at.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/system/KernelFile_p.h"

#include <algorithm>
#include <atomic>

namespace corvix {

class RangedFile : public HeapAllocated {
 public:
  static constexpr u32 kNoLimit = 0xFFFFFFFF;

  RangedFile() = default;
  RangedFile(const RangedFile&) = delete;
  RangedFile& operator=(const RangedFile&) = delete;

  // Takes a file over that was opened for this; false if there is none. What was open before is closed.
  bool attach(FileHandle file, u64 base = 0, u32 limit = kNoLimit) noexcept;

  // False if the system refused; the file counts as closed all the same.
  bool close() noexcept;

  bool isOpen() const noexcept { return static_cast<bool>(file_); }
  u32 position() const noexcept { return position_; }
  u64 base() const noexcept { return base_; }
  u32 limit() const noexcept { return limit_; }
  void setLimit(u32 limit) noexcept { limit_ = limit; }
  u32 size() const noexcept;
  u64 fileSize() const noexcept;

  // Has position 0 lie elsewhere in the file, and goes there. False if a limit makes this a part of the file.
  bool setBase(u64 base) noexcept;

  // A second handle on the same file, opened anew for reading; none if the system refuses.
  FileHandle reopen() const noexcept;

  // Attaches a duplicate of the other's handle. The two share the handle's pointer: every transfer of either has
  // to say from then on where it goes, which is slower.
  bool attachDuplicateOf(RangedFile& other) noexcept;

  u32 read(void* buffer, u32 count) noexcept;
  u32 write(const void* buffer, u32 count) noexcept;
  bool seek(u32 position) noexcept;

  // Neither minds a limit that lies behind the position: nothing is skipped then, and a step back is one byte.
  u32 skip(u32 count) noexcept;
  u32 stepBack() noexcept;

  // Cuts the file off `size` bytes behind the base, or lengthens it with zeros. The position stays.
  bool setSize(u32 size) noexcept;

  bool atEnd() const noexcept { return position_ >= limit_ || (!isAhead(position_) && position_ >= size()); }

  int readByte() noexcept {
    if (isAhead(position_) && position_ < limit_) return page_[position_++ - pageStart_];
    u8 byte;
    return read(&byte, 1) == 1 ? byte : -1;
  }

 private:
  static constexpr u32 kPageBytes = 4096;
  static constexpr u64 kNowhere = ~u64{0};
  static constexpr u32 kSmallRead = 512;  // more than that is read where it is wanted

  u32 room() const noexcept { return position_ < limit_ ? limit_ - position_ : 0; }
  bool isAhead(u32 position) const noexcept {
    return position - pageStart_ < pageLength_ && pageWrites_ == writes_->load(std::memory_order_acquire);
  }
  bool readAhead() noexcept;
  u32 readAt(u32 position, void* buffer, u32 count) noexcept;
  template <class Call>
  u32 transferAt(u32 position, Call call) noexcept;

  u32 position_ = 0;
  u64 base_ = 0;
  u32 limit_ = kNoLimit;
  FileHandle file_;
  u64 pointer_ = kNowhere;      // the handle's own, not moved when it is right already
  bool sharesPointer_ = false;  // with a duplicate of the handle: it is not relied on then

  std::atomic<u32>* writes_ = nullptr;  // the file's count; set when there is a page
  HeapBuffer<u8> page_;
  u32 pageStart_ = 0;
  u32 pageLength_ = 0;
  u32 pageWrites_ = 0;
};

}  // namespace corvix
