#include "core/baselib/streams/MemoryOutputStream.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

constexpr u32 kFirstBytes = 256;

}  // namespace

BMemoryOutputStream::~BMemoryOutputStream() = default;

u32 BMemoryOutputStream::write(const void* buffer, u32 count) {
  count = std::min(count, mostBytes_ - position_);
  if (count == 0 || !buffer || !reserve(position_ + count)) return 0;
  if (position_ > size_) std::memset(data_.get() + size_, 0, position_ - size_);
  std::memcpy(data_.get() + position_, buffer, count);
  position_ += count;
  size_ = std::max(size_, position_);
  return count;
}

bool BMemoryOutputStream::seek(u32 position) {
  position_ = std::min(position, mostBytes_);
  return true;
}

bool BMemoryOutputStream::setSize(u32 size) {
  if (size > mostBytes_ || !reserve(size)) return false;
  if (size > size_) std::memset(data_.get() + size_, 0, size - size_);
  size_ = size;
  return true;
}

u8* BMemoryOutputStream::detach() noexcept {
  position_ = size_ = capacity_ = 0;
  return data_.release();
}

bool BMemoryOutputStream::reserve(u32 size) noexcept {
  if (size <= capacity_) return true;
  u32 wanted = std::max(capacity_ > mostBytes_ / 2 ? mostBytes_ : capacity_ * 2, std::max(size, kFirstBytes));
  if (!data_.tryResize(wanted) && !data_.tryResize(wanted = size)) return false;  // exactly, when memory is short
  capacity_ = wanted;
  return true;
}

}  // namespace corvix
