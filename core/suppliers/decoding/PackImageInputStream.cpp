#include "core/suppliers/decoding/PackImageInputStream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace corvix {

namespace {

// The Paeth predictor: whichever of left, above and corner is nearest to left + above - corner; on a tie the first.
u8 paeth(int left, int above, int corner) noexcept {
  const int toLeft = std::abs(above - corner);
  const int toAbove = std::abs(left - corner);
  const int toCorner = std::abs(left + above - 2 * corner);
  if (toLeft <= toAbove && toLeft <= toCorner) return static_cast<u8>(left);
  return static_cast<u8>(toAbove <= toCorner ? above : corner);
}

}  // namespace

PackImageInputStream::PackImageInputStream(Ref<BInputStream> packed, const PackParams& parameters)
    : PackDecodeStream(std::move(packed)),
      predictor_(parameters.predictor),
      colors_(static_cast<u32>(parameters.colors)),
      bits_(static_cast<u32>(parameters.bitsPerComponent)),
      pixelBytes_((colors_ * bits_ + 7) / 8),
      rowSamples_(colors_ * static_cast<u32>(parameters.columns)),
      rowBytes_(parameters.rowBytes()) {
  const bool isPng = predictor_ >= PackParams::kPngPredictor && predictor_ <= PackParams::kPngPredictor + 5;
  const bool isKnown = isPng || predictor_ == PackParams::kNoPredictor || predictor_ == PackParams::kTiffPredictor;
  if (!isKnown || rowBytes_ == 0) fail(PackFault::Parameters);
}

PackImageInputStream::~PackImageInputStream() = default;

u32 PackImageInputStream::decode(u8* buffer, u32 count) {
  if (fault() == PackFault::Parameters) return 0;
  if (predictor_ == PackParams::kNoPredictor) return packed()->read(buffer, count);
  if (rowNext_ == rowEnd_ && !nextRow()) return 0;
  const u32 got = std::min(count, rowEnd_ - rowNext_);
  std::memcpy(buffer, row_ + rowNext_, got);
  rowNext_ += got;
  return got;
}

bool PackImageInputStream::nextRow() {
  if (!rows_) {
    const std::size_t stride = std::size_t{pixelBytes_} + rowBytes_;
    rows_.allocate(2 * stride);
    std::memset(rows_.get(), 0, 2 * stride);
    row_ = rows_.get() + pixelBytes_;
    above_ = row_ + stride;
  }
  if (rowEnd_ > 0 && rowEnd_ < rowBytes_) return false;  // that was the last one
  std::swap(row_, above_);
  rowNext_ = rowEnd_ = 0;
  const bool isPng = predictor_ >= PackParams::kPngPredictor;
  const int kind = isPng ? packed()->readByte() : 0;
  if (kind < 0) return false;
  const u32 got = readFully(*packed(), row_, rowBytes_);
  if (got < rowBytes_ && (isPng || got > 0)) fail(PackFault::Truncated);
  if (isPng && !takeBackPng(static_cast<u32>(kind), got)) {
    fail(PackFault::Damaged);
    return false;
  }
  if (!isPng) takeBackTiff(got);
  rowEnd_ = got;
  return got > 0;
}

bool PackImageInputStream::takeBackPng(u32 kind, u32 bytes) noexcept {
  const u8* const left = row_ - pixelBytes_;
  const u8* const corner = above_ - pixelBytes_;
  switch (kind) {
    case 0:
      return true;
    case 1:
      for (u32 i = 0; i < bytes; ++i) row_[i] = static_cast<u8>(row_[i] + left[i]);
      return true;
    case 2:
      for (u32 i = 0; i < bytes; ++i) row_[i] = static_cast<u8>(row_[i] + above_[i]);
      return true;
    case 3:
      for (u32 i = 0; i < bytes; ++i) row_[i] = static_cast<u8>(row_[i] + ((left[i] + above_[i]) >> 1));
      return true;
    case 4:
      for (u32 i = 0; i < bytes; ++i) row_[i] = static_cast<u8>(row_[i] + paeth(left[i], above_[i], corner[i]));
      return true;
    default:
      return false;
  }
}

void PackImageInputStream::takeBackTiff(u32 bytes) noexcept {
  if (bits_ == 8) {
    for (u32 i = colors_; i < bytes; ++i) row_[i] = static_cast<u8>(row_[i] + row_[i - colors_]);
  } else if (bits_ == 16) {
    for (u32 i = 2 * colors_; i + 1 < bytes; i += 2) {
      const u8* const left = row_ + i - 2 * colors_;
      const u32 sum = (u32{row_[i]} << 8 | row_[i + 1]) + (u32{left[0]} << 8 | left[1]);
      row_[i] = static_cast<u8>(sum >> 8);
      row_[i + 1] = static_cast<u8>(sum);
    }
  } else {
    const u32 mask = (1u << bits_) - 1;
    u8 left[32] = {};
    const u32 samples = std::min(bytes * 8 / bits_, rowSamples_);
    for (u32 i = 0, color = 0; i < samples; ++i, color = color + 1 < colors_ ? color + 1 : 0) {
      u8& byte = row_[i * bits_ / 8];
      const u32 shift = 8 - bits_ - i * bits_ % 8;
      left[color] = static_cast<u8>((left[color] + (byte >> shift)) & mask);
      byte = static_cast<u8>((byte & ~(mask << shift)) | u32{left[color]} << shift);
    }
  }
}

}  // namespace corvix
