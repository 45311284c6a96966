#include "core/baselib/streams/ChunkInputStream.h"

#include <algorithm>
#include <cstring>

namespace corvix {

BChunkInputStream::BChunkInputStream(Ref<BInputStream> source) : source_(std::move(source)) {
  if (!source_) return;
  size_ = source_->size();
  runStart_ = runEnd_ = source_->getPosition();
  randomSource_ = corvix::query<IBRAStream>(source_.get());
  const u32 mapSize = (size_ >> 15) + 1;
  pageMap_.allocate(mapSize);
  std::memset(pageMap_.get(), 0, mapSize);
  if (storage_.open()) storage_.setLimit(size_);
}

BChunkInputStream::~BChunkInputStream() = default;

void BChunkInputStream::close() {
  sureBytes_ = 0;
  randomSource_ = nullptr;
  source_.reset();
  storage_.close();
}

u32 BChunkInputStream::read(void* buffer, u32 count) {
  const u32 position = storage_.getPosition();
  return storage_.read(buffer, load(position, count));
}

int BChunkInputStream::readByte() {
  if (sureBytes_ > 0) {
    --sureBytes_;
    return storage_.readByte();
  }
  const u32 position = storage_.getPosition();
  if (load(position, 1) != 1) return -1;
  const u32 inPage = position % kPageBytes;
  if (inPage < kPageBytes - 1) sureBytes_ = upToEnd(position + 1, kPageBytes - 2 - inPage);
  return storage_.readByte();
}

u32 BChunkInputStream::unreadByte() {
  sureBytes_ = 0;
  return storage_.unreadByte();
}

u32 BChunkInputStream::skip(u32 count) {
  sureBytes_ = 0;
  return storage_.skip(count);
}

bool BChunkInputStream::seek(u32 position) {
  load(std::min(position, size_), 1);
  return storage_.seek(position);
}

bool BChunkInputStream::isPageLoaded(u32 page) const noexcept {
  return (page >> 3) < pageMapSize() && (pageMap_[page >> 3] & (0x80u >> (page & 7))) != 0;
}

void BChunkInputStream::setLoaded(u32 page) noexcept {
  pageMap_[page >> 3] = static_cast<u8>(pageMap_[page >> 3] | (0x80u >> (page & 7)));
}

// How many of the bytes that a read wants are there to be read.
u32 BChunkInputStream::load(u32 position, u32 count) {
  sureBytes_ = 0;
  if (!isOpen() || position > size_) return 0;
  const u32 wanted = upToEnd(position, count);
  const u32 last = (position + wanted) >> kPageShift;
  for (u32 page = position >> kPageShift; page <= last; ++page) {
    if (!isPageLoaded(page)) return loadFrom(page, position, wanted);
  }
  return wanted;
}

// The end may turn out to be nearer on the way.
u32 BChunkInputStream::loadFrom(u32 firstMissing, u32 position, u32 count) {
  for (u32 page = firstMissing; page <= (position + upToEnd(position, count)) >> kPageShift; ++page) {
    if (!isPageLoaded(page)) loadPage(page);
    if (isPageLoaded(page)) continue;
    const u32 start = page << kPageShift;
    const u32 good = runStart_ <= start && runEnd_ > start ? runEnd_ : start;
    return good > position ? upToEnd(position, std::min(count, good - position)) : 0;
  }
  return upToEnd(position, count);
}

void BChunkInputStream::loadPage(u32 page) {
  const u32 start = page << kPageShift;
  if (randomSource_ && randomSource_->seek(start)) {
    runStart_ = runEnd_ = start;
  } else if (runStart_ > start || source_->getPosition() != runEnd_) {
    return;  // its bytes have gone by
  }
  while (!isPageLoaded(page) && copyPiece()) {
  }
}

// Copies what the source gives at runEnd_, at most to the end of the page. False if nothing came.
bool BChunkInputStream::copyPiece() {
  const u32 page = runEnd_ >> kPageShift;
  const bool fromItsStart = runStart_ <= page << kPageShift;
  const u32 wanted = upToEnd(runEnd_, kPageBytes - runEnd_ % kPageBytes);
  u8 bytes[kPageBytes];
  const u32 got = wanted > 0 ? std::min(source_->read(bytes, wanted), wanted) : 0;
  if (got == 0 && wanted > 0 && source_->atEnd()) endAt(runEnd_);
  const bool stored = store(bytes, got);
  if (fromItsStart && stored && (runEnd_ >= size_ || runEnd_ >> kPageShift != page)) setLoaded(page);
  return stored && got > 0;
}

// False if the storage has no room; the source has then gone past runEnd_.
bool BChunkInputStream::store(const u8* bytes, u32 count) {
  if (count == 0) return true;
  const u32 position = storage_.getPosition();
  storage_.seek(runEnd_);
  const u32 stored = storage_.write(bytes, count);
  storage_.seek(position);
  runEnd_ += stored;
  return stored == count;
}

void BChunkInputStream::endAt(u32 size) noexcept {
  size_ = size;
  storage_.setLimit(size);
}

}  // namespace corvix
