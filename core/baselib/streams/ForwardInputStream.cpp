#include "core/baselib/streams/ForwardInputStream.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

constexpr u32 kPieceBytes = 4096;

}  // namespace

BForwardInputStream::~BForwardInputStream() = default;

u32 BForwardInputStream::read(void* buffer, u32 count) {
  if (!buffer) return 0;
  const u32 ready = std::min(count, end_ - next_);
  if (ready > 0) {
    std::memcpy(buffer, piece_.get() + next_, ready);
    next_ += ready;
    return ready;
  }
  if (count < kPieceBytes) return count > 0 && refill() ? read(buffer, count) : 0;
  const u32 got = fetchWithin(buffer, count);
  if (got > 0) {
    // The last byte is kept, to step back to.
    if (!piece_) piece_.allocate(kPieceBytes);
    piece_[0] = static_cast<const u8*>(buffer)[got - 1];
    next_ = end_ = 1;
    fetched_ += got;
  }
  return got;
}

int BForwardInputStream::readByte() { return next_ < end_ || refill() ? piece_[next_++] : -1; }

u32 BForwardInputStream::unreadByte() {
  if (next_ > 0) --next_;
  return getPosition();
}

bool BForwardInputStream::atEnd() { return next_ == end_ && !refill(); }

// The byte before the new piece stays in front of it.
bool BForwardInputStream::refill() {
  if (!piece_) piece_.allocate(kPieceBytes);
  const u32 kept = end_ > 0 ? 1 : 0;
  if (kept) piece_[0] = piece_[end_ - 1];
  next_ = end_ = kept;
  const u32 got = fetchWithin(piece_.get() + kept, kPieceBytes - kept);
  end_ += got;
  fetched_ += got;
  return got > 0;
}

u32 BForwardInputStream::fetchWithin(void* buffer, u32 count) {
  const u32 most = std::min(count, 0xFFFFFFFF - fetched_);
  return most > 0 ? std::min(fetch(buffer, most), most) : 0;
}

void BForwardInputStream::discard(u32 position) noexcept {
  next_ = end_ = 0;
  fetched_ = position;
}

}  // namespace corvix
