#include "core/suppliers/decoding/PackDecodeStream.h"

#include "core/suppliers/decoding/Decoders_p.h"
#include "core/suppliers/decoding/PackFlateInputStream.h"
#include "core/suppliers/decoding/PackImageInputStream.h"

namespace corvix {

namespace {

constexpr u32 kInputBytes = 64 * 1024;

PackDecodeStream* decoderOf(Ref<BInputStream> packed, const PackParams& parameters) {
  switch (parameters.method) {
    case PackMethod::Flate:
      return new PackFlateInputStream(std::move(packed));
    case PackMethod::Lzw:
      return new LzwInputStream(std::move(packed), parameters.earlyChange);
    case PackMethod::RunLength:
      return new RunLengthInputStream(std::move(packed));
    case PackMethod::AsciiHex:
      return new AsciiHexInputStream(std::move(packed));
    case PackMethod::Ascii85:
      return new Ascii85InputStream(std::move(packed));
    case PackMethod::None:
      break;
  }
  return nullptr;
}

bool hasPredictor(const PackParams& parameters) noexcept {
  return parameters.predictor != PackParams::kNoPredictor &&
         (parameters.method == PackMethod::Flate || parameters.method == PackMethod::Lzw);
}

}  // namespace

PackDecodeStream* PackDecodeStream::create(Ref<BInputStream> packed, const PackParams& parameters) {
  PackDecodeStream* const decoder = decoderOf(packed, parameters);
  if (decoder && !hasPredictor(parameters)) return decoder;
  if (decoder) packed = Ref<BInputStream>::adopt(decoder);
  return new PackImageInputStream(std::move(packed), parameters);
}

PackDecodeStream::PackDecodeStream(Ref<BInputStream> packed)
    : packed_(std::move(packed)), inner_(corvix::query<PackDecodeStream>(packed_.get())) {}

PackDecodeStream::~PackDecodeStream() { _sfree(input_); }

void PackDecodeStream::close() {
  fault_ = fault();
  inner_ = nullptr;
  packed_.reset();
  next_ = end_ = 0;
  discard();
}

PackFault PackDecodeStream::fault() const noexcept {
  if (fault_ == PackFault::Parameters || !inner_) return fault_;
  const PackFault first = inner_->fault();
  return first == PackFault::None ? fault_ : first;
}

bool PackDecodeStream::refill() {
  if (next_ < end_) return true;
  if (!input_) input_ = static_cast<u8*>(heapAllocate(kInputBytes));
  next_ = 0;
  end_ = packed_->read(input_, kInputBytes);
  return end_ > 0;
}

u32 PackDecodeStream::fetch(void* buffer, u32 count) {
  if (isAtEnd_ || !packed_) return 0;
  const u32 got = decode(static_cast<u8*>(buffer), count);
  isAtEnd_ = got == 0;
  return got;
}

}  // namespace corvix
