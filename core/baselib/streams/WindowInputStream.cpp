#include "core/baselib/streams/WindowInputStream.h"

#include <algorithm>

namespace corvix {

BWindowInputStream::BWindowInputStream(Ref<BInputStream> source, u32 offset, u32 length)
    : random_(corvix::query<IBRAStream>(source.get())),
      offset_(offset),
      length_(std::min(length, 0xFFFFFFFF - offset)) {
  if (random_) source_ = std::move(source);
}

BWindowInputStream::~BWindowInputStream() = default;

void BWindowInputStream::close() {
  position_ = 0;
  random_ = nullptr;
  source_.reset();
}

u32 BWindowInputStream::size() const noexcept {
  if (!isOpen()) return 0;
  const u32 whole = source_->size();
  if (whole == kUnknownSize) return offset_ + length_ == kUnknownSize ? kUnknownSize : length_;
  return whole > offset_ ? std::min(whole - offset_, length_) : 0;
}

// False where the source's position cannot be set.
bool BWindowInputStream::reachSource() {
  const u32 target = offset_ + position_;
  return source_ && (source_->getPosition() == target || (random_->seek(target) && source_->getPosition() == target));
}

u32 BWindowInputStream::read(void* buffer, u32 count) {
  count = std::min(count, length_ - position_);
  if (count == 0 || !reachSource()) return 0;
  const u32 got = source_->read(buffer, count);
  position_ += got;
  return got;
}

int BWindowInputStream::readByte() {
  if (position_ == length_ || !reachSource()) return -1;
  const int byte = source_->readByte();
  position_ += byte >= 0 ? 1 : 0;
  return byte;
}

bool BWindowInputStream::seek(u32 position) {
  if (!isOpen()) return false;
  position_ = std::min(position, length_);
  return true;
}

BWindowInputStream* BWindowInputStream::clone() {
  if (!isOpen()) return nullptr;
  auto* const random = corvix::query<BRAInputStream>(source_.get());
  auto copy = Ref<BInputStream>::adopt(random ? random->clone() : nullptr);
  return make<BWindowInputStream>(copy ? std::move(copy) : source_, offset_, length_).detach();
}

}  // namespace corvix
