#include "core/suppliers/decoding/PackDecodeStream.h"

#include "core/suppliers/decoding/DecoderTable_p.h"
#include "core/suppliers/decoding/PackImageInputStream.h"

namespace corvix {

namespace {

constexpr u32 kInputBytes = 64 * 1024;

}  // namespace

PackDecodeStream* PackDecodeStream::create(Ref<BInputStream> packed, const PackParams& parameters) {
  const DecoderRow* const row = decoderOf(parameters.method);
  PackDecodeStream* const decoder = row ? row->make(packed, parameters) : nullptr;
  if (decoder && (!row->hasPredictor || parameters.predictor == PackParams::kNoPredictor)) return decoder;
  if (decoder) packed = Ref<BInputStream>::adopt(decoder);
  return new PackImageInputStream(std::move(packed), parameters);
}

PackDecodeStream::PackDecodeStream(Ref<BInputStream> packed)
    : packed_(std::move(packed)), inner_(corvix::query<PackDecodeStream>(packed_.get())) {}

PackDecodeStream::~PackDecodeStream() = default;

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
  if (!input_) input_.allocate(kInputBytes);
  next_ = 0;
  end_ = packed_->read(input_.get(), kInputBytes);
  return end_ > 0;
}

u32 PackDecodeStream::fetch(void* buffer, u32 count) {
  if (isAtEnd_ || !packed_) return 0;
  const u32 got = decode(static_cast<u8*>(buffer), count);
  isAtEnd_ = got == 0;
  return got;
}

}  // namespace corvix
