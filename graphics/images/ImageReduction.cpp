// Images made smaller: every pixel of the result is the average of the area that it shows, weighted by alpha.
#include "graphics/images/CmykConversion_p.h"
#include "graphics/images/ImageBits_p.h"
#include "graphics/quality/Quality_p.h"

#include <algorithm>
#include <cmath>

namespace corvix {

namespace {

constexpr u32 kWhole = 256;          // the weight of a pixel that lies in one of the result with all of itself
constexpr i32 kMostToOne = 1 << 16;  // pixels of a row that go into one: their sum fits 32 bits

// Where a pixel of the image goes: so much into `target`, the rest into the next.
struct Share {
  i32 target;
  u32 weight;
};

Share shareOf(i32 pixel, i32 all, i32 target) noexcept {
  const i64 begin = i64{pixel} * target;
  const i64 first = begin / all;
  const i64 part = std::min<i64>(target, (first + 1) * all - begin);
  return {static_cast<i32>(first), static_cast<u32>((part * kWhole + target / 2) / target)};
}

// Those of the result of which nothing is missing.
void wholeTargets(i32 from, i32 to, i32 all, i32 target, i32& first, i32& end) noexcept {
  first = static_cast<i32>((i64{from} * target + all - 1) / all);
  end = static_cast<i32>(i64{to} * target / all);
}

void readRow(const ImageView& view, i32 x, i32 y, i32 count, std::vector<u8>& work, Color* colors) {
  if (view.model != ColorModel::Cmyk) return readColors(view, x, y, 1, count, colors);
  work.resize(3 * static_cast<std::size_t>(count));
  cmykToRgb(view.rows + static_cast<std::ptrdiff_t>(view.strideBytes) * y + 4 * static_cast<std::ptrdiff_t>(x),
            static_cast<std::size_t>(count), quality().cmykMode(), work.data());
  const u8* from = work.data();
  for (i32 i = 0; i < count; ++i, from += 3) colors[i] = rgb(from[2], from[1], from[0]);
}

class Reducer {
 public:
  Reducer(i32 from, i32 to, i32 all, i32 target, bool hasAlpha) : hasAlpha_(hasAlpha) {
    wholeTargets(from, to, all, target, first_, end_);
    if (first_ >= end_) return;
    // One more on either side for what lies there in part.
    weights_.assign(static_cast<std::size_t>(end_ - first_) + 2, 0);
    for (i32 x = from; x < to; ++x) {
      Share share = shareOf(x, all, target);
      share.target -= first_ - 1;
      shares_.push_back(share);
      weights_[static_cast<std::size_t>(share.target)] += share.weight;
      if (share.weight < kWhole) weights_[static_cast<std::size_t>(share.target) + 1] += kWhole - share.weight;
    }
    line_.resize(4 * weights_.size());
    sums_.assign(line_.size(), 0);
  }

  i32 first() const noexcept { return first_; }
  i32 end() const noexcept { return end_; }

  void takeRow(const Color* colors) noexcept {
    std::fill(line_.begin(), line_.end(), 0);
    for (const Share& share : shares_) {
      const Color color = *colors++;
      u32* const to = &line_[4 * static_cast<std::size_t>(share.target)];
      add(to, color, share.weight);
      if (share.weight < kWhole) add(to + 4, color, kWhole - share.weight);
    }
  }

  // The row that was taken, with so much of itself.
  void addRow(u32 weight) noexcept {
    const auto part = static_cast<float>(weight);
    for (std::size_t i = 0; i < line_.size(); ++i) sums_[i] += static_cast<float>(line_[i]) * part;
    weight_ += weight;
  }

  // All that was added, and begins anew.
  void finishRow(Color* colors) noexcept {
    for (i32 i = 1; i <= end_ - first_; ++i) {
      const float* const sum = &sums_[4 * static_cast<std::size_t>(i)];
      const float area = static_cast<float>(weights_[static_cast<std::size_t>(i)]) * static_cast<float>(weight_);
      const float alpha = hasAlpha_ ? sum[3] / area : 255;
      const float scale = alpha > 0 ? 255 / (alpha * area) : 0;
      const auto level = [](float value) { return static_cast<u32>(std::min(value, 255.0F) + 0.5F); };
      *colors++ = argb(level(alpha), level(sum[0] * scale), level(sum[1] * scale), level(sum[2] * scale));
    }
    dropRow();
  }
  void dropRow() noexcept {
    std::fill(sums_.begin(), sums_.end(), 0.0F);
    weight_ = 0;
  }

 private:
  void add(u32* to, Color color, u32 weight) const noexcept {
    const u32 alpha = hasAlpha_ ? alphaOf(color) : 255;
    const auto part = [alpha, weight](u32 level) {
      return alpha == 255 ? level * weight : (level * alpha * weight + 127) / 255;
    };
    to[0] += part(redOf(color));
    to[1] += part(greenOf(color));
    to[2] += part(blueOf(color));
    to[3] += alpha * weight;
  }

  bool hasAlpha_;
  i32 first_ = 0;
  i32 end_ = 0;
  u32 weight_ = 0;             // of the rows in the sums
  std::vector<Share> shares_;  // counted from one before the first
  std::vector<u32> weights_;
  std::vector<u32> line_;
  std::vector<float> sums_;
};

}  // namespace

ImageView viewOf(const ImageBits& bits) noexcept {
  const ColorModel model = bits.bitsPerPixel <= 8    ? ColorModel::Indexed
                           : bits.bitsPerPixel == 24 ? ColorModel::Rgb
                                                     : ColorModel::Argb;
  return {bits.width,
          bits.height,
          model,
          bits.bitsPerPixel,
          bits.strideBytes,
          bits.pixels,
          bits.palette.data(),
          static_cast<i32>(bits.palette.size()),
          0};
}

void reducedSize(const ImageView& view, const Matrix& unitToDevice, i32& width, i32& height) noexcept {
  const Matrix unit = isAlongAxes(unitToDevice) ? onWholePixels(unitToDevice) : unitToDevice;
  const auto side = [](double length, i32 pixels) {
    const i32 least = std::max(1, pixels / kMostToOne + 1);
    return length < pixels ? std::clamp(static_cast<i32>(std::ceil(length)), std::min(least, pixels), pixels) : pixels;
  };
  width = side(std::hypot(unit.a, unit.b), view.width);
  height = side(std::hypot(unit.c, unit.d), view.height);
}

ImageBits reduced(const ImageView& view, const PixelBox& seen, i32 width, i32 height, bool hasAlpha) {
  ImageBits result;
  Reducer reducer(seen.left, seen.right, view.width, width, hasAlpha);
  PixelBox whole = {reducer.first(), 0, reducer.end(), 0};
  wholeTargets(seen.top, seen.bottom, view.height, height, whole.top, whole.bottom);
  if (whole.left >= whole.right || whole.top >= whole.bottom) return result;
  allocatePixels(result, width, height, 32);
  result.hasAlpha = hasAlpha;
  result.seen = whole;
  std::vector<Color> colors(static_cast<std::size_t>(seen.right - seen.left));
  std::vector<u8> work;
  for (i32 y = seen.top; y < seen.bottom; ++y) {
    const Share share = shareOf(y, view.height, height);
    readRow(view, seen.left, y, seen.right - seen.left, work, colors.data());
    reducer.takeRow(colors.data());
    reducer.addRow(share.weight);
    if (i64{y + 1} * height < i64{share.target + 1} * view.height) continue;
    if (share.target >= whole.top && share.target < whole.bottom) {
      reducer.finishRow(reinterpret_cast<Color*>(result.converted.data() +
                                                 static_cast<std::ptrdiff_t>(result.strideBytes) * share.target) +
                        whole.left);
    } else {
      reducer.dropRow();
    }
    if (share.weight < kWhole) reducer.addRow(kWhole - share.weight);
  }
  return result;
}

}  // namespace corvix
