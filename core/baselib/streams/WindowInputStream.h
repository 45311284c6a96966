// BWindowInputStream: a part of another stream as a stream of its own, from position 0. Windows may lie in windows.
//
//   const auto table = make<BWindowInputStream>(file, offset, length);
//
// Any number of windows may share a source, and with it one thread: each sets the source's position before it reads,
// unless that is right already. What is written to the source is seen.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/RandomAccessInputStream.h"

namespace corvix {

class CORVIX_API BWindowInputStream final : public BRAInputStream {
  CORVIX_IDENTITY(BWindowInputStream, 0x7C26E0D4, 0x4B8F5A31, 0x9D03B7E6, 0x18F4C25A, BRAInputStream)

 public:
  // The `length` bytes of `source` behind `offset`, or as many as there are. Closed if the source is none of random
  // access (IBRAStream).
  BWindowInputStream(Ref<BInputStream> source, u32 offset, u32 length = kUnknownSize);
  ~BWindowInputStream() override;

  bool isOpen() const noexcept override { return source_ && source_->isOpen(); }

  // Lets the source go; it stays open.
  void close() override;

  u32 getPosition() const noexcept override { return position_; }
  u32 size() const noexcept override;
  u32 read(void* buffer, u32 count) override;
  int readByte() override;
  bool seek(u32 position) override;

  // Over a clone of the source, or over the source itself where it has none.
  BWindowInputStream* clone() override;

 private:
  bool reachSource();

  Ref<BInputStream> source_;
  IBRAStream* random_ = nullptr;
  u32 offset_;
  u32 length_;  // at most; the largest position
  u32 position_ = 0;
};

}  // namespace corvix
