#include "core/baselib/streams/RangedFile_p.h"

#include <cstring>

namespace corvix {

namespace {

// Files that share a count by chance cost each other a page read anew, nothing else.
constexpr u32 kCounts = 1024;
std::atomic<u32> writeCounts[kCounts];

constexpr u64 kFarthest = u64{1} << 62;  // the system's offsets have a sign

std::atomic<u32>& writeCountOf(HANDLE file) noexcept {
  BY_HANDLE_FILE_INFORMATION info{};
  GetFileInformationByHandle(file, &info);
  const u32 mixed = (info.nFileIndexLow ^ info.nFileIndexHigh ^ info.dwVolumeSerialNumber) * 0x9E3779B1u;
  return writeCounts[mixed >> 22];
}

OVERLAPPED at(u64 offset) noexcept {
  OVERLAPPED where{};
  where.Offset = static_cast<DWORD>(offset);
  where.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return where;
}

}  // namespace

bool RangedFile::attach(FileHandle file, u64 base, u32 limit) noexcept {
  close();
  file_ = std::move(file);
  position_ = 0;
  pointer_ = kNowhere;
  sharesPointer_ = false;
  base_ = base;
  limit_ = limit;
  if (isOpen()) writes_ = &writeCountOf(file_.get());
  return isOpen();
}

bool RangedFile::close() noexcept {
  pageLength_ = 0;
  return !isOpen() || CloseHandle(file_.release());
}

u64 RangedFile::fileSize() const noexcept {
  LARGE_INTEGER size;
  return isOpen() && GetFileSizeEx(file_.get(), &size) ? static_cast<u64>(size.QuadPart) : 0;
}

u32 RangedFile::size() const noexcept {
  const u64 bytes = fileSize();
  return bytes < base_ ? 0 : static_cast<u32>(std::min<u64>(bytes - base_, limit_));
}

bool RangedFile::setBase(u64 base) noexcept {
  if (!isOpen() || limit_ != kNoLimit || base > kFarthest) return false;
  base_ = base;
  position_ = 0;
  pageLength_ = 0;
  return true;
}

FileHandle RangedFile::reopen() const noexcept {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  return FileHandle(isOpen() ? ReOpenFile(file_.get(), GENERIC_READ, kShareAll, 0) : INVALID_HANDLE_VALUE);
}

bool RangedFile::attachDuplicateOf(RangedFile& other) noexcept {
  HANDLE second = INVALID_HANDLE_VALUE;
  const HANDLE self = GetCurrentProcess();
  if (!other.isOpen() || !DuplicateHandle(self, other.file_.get(), self, &second, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
    return false;
  }
  attach(FileHandle(second), other.base_);
  sharesPointer_ = other.sharesPointer_ = true;
  return true;
}

u32 RangedFile::read(void* buffer, u32 count) noexcept {
  count = std::min(count, room());
  if (count == 0 || !buffer || !isOpen()) return 0;
  u32 got = 0;
  if (count <= kSmallRead && (isAhead(position_) || readAhead()) && position_ - pageStart_ + count <= pageLength_) {
    std::memcpy(buffer, page_.get() + (position_ - pageStart_), count);
    got = count;
  } else {
    got = readAt(position_, buffer, count);
  }
  position_ += got;
  return got;
}

u32 RangedFile::write(const void* buffer, u32 count) noexcept {
  count = std::min(count, room());
  if (count == 0 || !buffer || !isOpen()) return 0;
  const u32 written = transferAt(
      position_, [&](DWORD* done, OVERLAPPED* where) { return WriteFile(file_.get(), buffer, count, done, where); });
  writes_->fetch_add(1, std::memory_order_release);
  position_ += written;
  return written;
}

bool RangedFile::seek(u32 position) noexcept {
  if (!isOpen()) return false;
  position_ = std::min(position, limit_);
  return true;
}

u32 RangedFile::skip(u32 count) noexcept {
  const u32 skipped = isOpen() ? std::min(count, room()) : 0;
  position_ += skipped;
  return skipped;
}

u32 RangedFile::stepBack() noexcept {
  if (isOpen() && position_ > 0) --position_;
  return position_;
}

bool RangedFile::setSize(u32 size) noexcept {
  if (!isOpen() || size > limit_) return false;
  FILE_END_OF_FILE_INFO end;
  end.EndOfFile.QuadPart = static_cast<LONGLONG>(base_ + size);
  if (!SetFileInformationByHandle(file_.get(), FileEndOfFileInfo, &end, sizeof end)) return false;
  writes_->fetch_add(1, std::memory_order_release);
  return true;
}

bool RangedFile::readAhead() noexcept {
  if (!page_ && !page_.tryAllocate(kPageBytes)) return false;
  pageWrites_ = writes_->load(std::memory_order_acquire);  // before reading: a write meanwhile drops the page
  pageStart_ = position_ & ~(kPageBytes - 1);
  pageLength_ = readAt(pageStart_, page_.get(), kPageBytes);
  return position_ - pageStart_ < pageLength_;
}

u32 RangedFile::readAt(u32 position, void* buffer, u32 count) noexcept {
  return transferAt(position,
                    [&](DWORD* done, OVERLAPPED* where) { return ReadFile(file_.get(), buffer, count, done, where); });
}

template <class Call>
u32 RangedFile::transferAt(u32 position, Call call) noexcept {
  const u64 offset = base_ + position;
  DWORD done = 0;
  if (sharesPointer_) {
    OVERLAPPED where = at(offset);
    return call(&done, &where) ? done : 0;
  }
  LARGE_INTEGER target;
  target.QuadPart = static_cast<LONGLONG>(offset);
  if (offset != pointer_ && !SetFilePointerEx(file_.get(), target, nullptr, FILE_BEGIN)) return 0;
  const bool isDone = call(&done, nullptr) != FALSE;
  pointer_ = isDone ? offset + done : kNowhere;
  return isDone ? done : 0;
}

}  // namespace corvix
