#include "core/baselib/streams/MemoryInputStream.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

// Data of no bytes is a stream all the same.
constexpr u8 kNothing = 0;

std::shared_ptr<const void> owned(void* block) { return {block, _sfree, HeapAllocator<u8>()}; }

}  // namespace

BMemoryInputStream::BMemoryInputStream(const void* data, u32 size, Bytes bytes)
    : size_(size), data_(static_cast<const u8*>(data)) {
  if (size == 0 || !data) {
    size_ = 0;
    data_ = &kNothing;
  }
  if (bytes == Bytes::Adopt) owner_ = owned(const_cast<void*>(data));
  if (bytes != Bytes::Copy || size_ == 0) return;
  void* const copy = _smalloc(size);
  if (copy) {
    std::memcpy(copy, data, size);
    owner_ = owned(copy);
  } else {
    size_ = 0;
  }
  data_ = static_cast<const u8*>(copy);
}

BMemoryInputStream::BMemoryInputStream(std::shared_ptr<const void> owner, const u8* data, u32 size) noexcept
    : size_(size), data_(data), owner_(std::move(owner)) {}

void BMemoryInputStream::close() {
  data_ = nullptr;
  position_ = size_ = 0;
  owner_.reset();
}

u32 BMemoryInputStream::read(void* buffer, u32 count) {
  if (position_ >= size_ || !buffer) return 0;
  const u32 got = std::min(count, size_ - position_);
  std::memcpy(buffer, data_ + position_, got);
  position_ += got;
  return got;
}

bool BMemoryInputStream::seek(u32 position) {
  if (!isOpen()) return false;
  position_ = position;
  return true;
}

BMemoryInputStream* BMemoryInputStream::clone() {
  return isOpen() ? new BMemoryInputStream(owner_, data_, size_) : nullptr;
}

}  // namespace corvix
