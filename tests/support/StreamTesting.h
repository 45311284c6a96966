// Sources for the tests of streams.
#pragma once

#include "core/baselib/streams/ForwardInputStream.h"
#include "core/baselib/streams/RandomAccess.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace corvix::testing_support {

// Bytes of which no two pages are alike.
inline std::string pattern(std::size_t size) {
  std::string bytes(size, 0);
  u32 state = 1;
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24);
  }
  return bytes;
}

// Gives its bytes forward only, at most `piece` at a time.
class Forward : public BForwardInputStream {
  CORVIX_IDENTITY(Forward, 0x30000001, 2, 3, 4, BForwardInputStream)
 public:
  Forward(std::string bytes, u32 piece) : bytes_(std::move(bytes)), piece_(piece) {}
  u32 size() const noexcept override { return static_cast<u32>(bytes_.size()); }

 private:
  u32 fetch(void* buffer, u32 count) override {
    const u32 got = std::min({count, piece_, static_cast<u32>(bytes_.size()) - next_});
    std::memcpy(buffer, bytes_.data() + next_, got);
    next_ += got;
    return got;
  }
  std::string bytes_;
  u32 piece_;
  u32 next_ = 0;
};

// Does what it is told, and keeps what it was asked.
class Scripted : public BInputStream, public IBRAStream {
  CORVIX_IDENTITY(Scripted, 0x30000002, 2, 3, 4, BInputStream, IBRAStream)
 public:
  explicit Scripted(std::string content) : bytes(std::move(content)), toldSize(static_cast<u32>(bytes.size())) {}

  std::string bytes;
  u32 toldSize;
  u32 piece = 0xFFFFFFFF;     // at most so much a read
  bool seeks = true;          // else `seek` fails
  std::size_t failsAt = ~0u;  // reads that come this far give nothing, `failures` times
  u32 failures = 0;
  std::vector<u32> readPositions;  // those that gave something

  u32 getPosition() const noexcept override { return position_; }
  u32 size() const noexcept override { return toldSize; }
  bool atEnd() override { return position_ >= bytes.size(); }
  bool seek(u32 position) override {
    if (seeks) position_ = position;
    return seeks;
  }
  u32 unreadByte() override { return position_; }
  u32 read(void* buffer, u32 count) override {
    std::size_t most = position_ < bytes.size() ? bytes.size() - position_ : 0;
    if (failures > 0 && position_ <= failsAt) most = std::min(most, failsAt - position_);
    if (failures > 0 && position_ == failsAt) --failures;
    const u32 got = std::min({count, piece, static_cast<u32>(most)});
    if (got > 0) readPositions.push_back(position_);
    std::memcpy(buffer, bytes.data() + std::min<std::size_t>(position_, bytes.size()), got);
    position_ += got;
    return got;
  }

 private:
  u32 position_ = 0;
};

}  // namespace corvix::testing_support
