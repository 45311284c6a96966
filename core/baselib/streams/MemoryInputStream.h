// BMemoryInputStream: random access to bytes in memory.
#pragma once

#include "core/baselib/streams/RandomAccessInputStream.h"

#include <memory>

namespace corvix {

class CORVIX_API BMemoryInputStream final : public BRAInputStream {
  CORVIX_IDENTITY(BMemoryInputStream, 0x212E628F, 0x42632579, 0x985C5F13, 0x40634789, BRAInputStream)

 public:
  enum class Bytes {
    Borrow,  // the caller's; they outlive the stream and its clones
    Copy,    // a copy is made
    Adopt,   // the stream frees them with _sfree
  };

  // Closed if a copy was asked for and cannot be had.
  BMemoryInputStream(const void* data, u32 size, Bytes bytes);

  bool isOpen() const noexcept override { return data_ != nullptr; }
  void close() override;
  u32 getPosition() const noexcept override { return position_; }
  u32 size() const noexcept override { return size_; }
  u32 read(void* buffer, u32 count) override;
  int readByte() override { return position_ < size_ ? data_[position_++] : -1; }
  bool seek(u32 position) override;
  BMemoryInputStream* clone() override;  // shares the bytes

 private:
  BMemoryInputStream(std::shared_ptr<const void> owner, const u8* data, u32 size) noexcept;

  u32 position_ = 0;
  u32 size_ = 0;
  const u8* data_ = nullptr;
  std::shared_ptr<const void> owner_;
};

}  // namespace corvix
