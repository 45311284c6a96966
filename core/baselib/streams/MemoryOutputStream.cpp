#include "core/baselib/streams/MemoryOutputStream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace corvix {

namespace {

constexpr u32 kFirstBytes = 256;

}  // namespace

BMemoryOutputStream::~BMemoryOutputStream() { _sfree(data_); }

u32 BMemoryOutputStream::write(const void* buffer, u32 count) {
  count = std::min(count, mostBytes_ - position_);
  if (count == 0 || !reserve(position_ + count)) return 0;
  if (position_ > size_) std::memset(data_ + size_, 0, position_ - size_);
  std::memcpy(data_ + position_, buffer, count);
  position_ += count;
  size_ = std::max(size_, position_);
  return count;
}

bool BMemoryOutputStream::seek(u32 position) {
  position_ = std::min(position, mostBytes_);
  return true;
}

u8* BMemoryOutputStream::detach() noexcept {
  position_ = size_ = capacity_ = 0;
  return std::exchange(data_, nullptr);
}

bool BMemoryOutputStream::reserve(u32 size) noexcept {
  if (size <= capacity_) return true;
  u32 wanted = std::max(capacity_ > mostBytes_ / 2 ? mostBytes_ : capacity_ * 2, std::max(size, kFirstBytes));
  void* block = _srealloc(data_, wanted);
  if (!block) block = _srealloc(data_, wanted = size);  // exactly, when memory is short
  if (!block) return false;
  data_ = static_cast<u8*>(block);
  capacity_ = wanted;
  return true;
}

}  // namespace corvix
