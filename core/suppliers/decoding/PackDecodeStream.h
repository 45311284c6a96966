// PackDecodeStream: base of the streams that unpack another one while they are read. Bad data never raises
// anything: what can be unpacked is read, then the stream is at its end, and `fault` says why. Memory does not
// depend on what the data expands to.
//
// The packed stream is read ahead of what is unpacked; nobody else reads it meanwhile.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/ForwardInputStream.h"
#include "core/suppliers/decoding/PackParams.h"

namespace corvix {

enum class PackFault {
  None,
  Truncated,   // the packed data ends too early
  Damaged,     // it cannot be what the method makes
  Parameters,  // the parameters contradict themselves or ask for too much; nothing is read
};

class CORVIX_API PackDecodeStream : public BForwardInputStream {
  CORVIX_IDENTITY(PackDecodeStream, 0x17A9D5E4, 0x4FC260B3, 0x86E1394D, 0xF05B8C72, BForwardInputStream)

 public:
  // Unpacks `packed` by the parameters, predictor included; owned by the caller.
  static PackDecodeStream* create(Ref<BInputStream> packed, const PackParams& parameters);

  ~PackDecodeStream() override;

  bool isOpen() const noexcept override { return static_cast<bool>(packed_); }

  // Known when it is closed only.
  u32 size() const noexcept override { return isOpen() ? kUnknownSize : 0; }

  // Lets the packed stream go.
  void close() override;

  // What was wrong with the data that was read so far, here or in a PackDecodeStream that this one unpacks. Ask
  // at the end.
  PackFault fault() const noexcept;

 protected:
  explicit PackDecodeStream(Ref<BInputStream> packed);

  // As `fetch`; not called any more after it has returned 0.
  virtual u32 decode(u8* buffer, u32 count) = 0;

  // The next packed byte, or -1.
  int nextByte() { return next_ < end_ || refill() ? input_[next_++] : -1; }

  // Has the input hold something if anything is left.
  bool refill();

  void fail(PackFault fault) noexcept { fault_ = fault; }

  BInputStream* packed() const noexcept { return packed_.get(); }

  HeapBuffer<u8> input_;  // [next_, end_) has come and is not unpacked
  u32 next_ = 0;
  u32 end_ = 0;

 private:
  u32 fetch(void* buffer, u32 count) final;

  PackFault fault_ = PackFault::None;
  bool isAtEnd_ = false;
  Ref<BInputStream> packed_;
  PackDecodeStream* inner_;
};

}  // namespace corvix
