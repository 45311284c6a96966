// Images made smaller: every pixel of the result is the average of the area that it shows, weighted by alpha.
#include "graphics/images/ImageBits_p.h"

#include <algorithm>
#include <cmath>

namespace corvix {

namespace {

constexpr i32 kWhole = 256;          // the weight of a pixel that lies in one of the result with all of itself
constexpr i32 kMostToOne = 1 << 16;  // pixels of a row that go into one
constexpr i32 kMostInShort = 257;    // rows of bytes whose sum fits 16 bits

// Where a pixel of the image goes: so much into `target`, the rest into the next.
struct Share {
  i32 target;
  i32 weight;
};

Share shareOf(i32 pixel, i32 all, i32 target) noexcept {
  const i64 begin = i64{pixel} * target;
  const i64 first = begin / all;
  const i64 part = std::min<i64>(target, (first + 1) * all - begin);
  return {static_cast<i32>(first), static_cast<i32>((part * kWhole + target / 2) / target)};
}

i32 weightIn(i32 pixel, i32 all, i32 target, i32 wanted) noexcept {
  const Share share = shareOf(pixel, all, target);
  return share.target == wanted ? share.weight : kWhole - share.weight;
}

// Those of the result of which nothing is missing.
void wholeTargets(i32 from, i32 to, i32 all, i32 target, i32& first, i32& end) noexcept {
  first = static_cast<i32>((i64{from} * target + all - 1) / all);
  end = static_cast<i32>(i64{to} * target / all);
}

// The rows of an image in bytes that can be summed: one of grey, three of colour, or four with alpha.
class Rows {
 public:
  Rows(const ImageView& view, i32 left, i32 count, i32 step, bool hasAlpha)
      : view_(view), left_(left), count_(count), step_(step) {
    const bool isBytes = view.model != ColorModel::Indexed && view.model != ColorModel::Cmyk;
    channels_ = hasAlpha || view.model == ColorModel::Argb ? 4 : isBytes ? view.bitsPerPixel / 8 : 3;
    isDirect_ = isBytes && step == 1;
    isStepped_ = isBytes && step > 1;
    if (!isDirect_) work_.resize(static_cast<std::size_t>(channels_) * static_cast<u32>(count));
  }

  i32 channels() const noexcept { return channels_; }

  const u8* at(i32 y) {
    if (!isDirect_) {
      read(y * step_, work_.data());
      return work_.data();
    }
    return pixel(left_, y);
  }

 private:
  const u8* pixel(i32 x, i32 y) const noexcept {
    return view_.rows + static_cast<std::ptrdiff_t>(view_.strideBytes) * y + static_cast<std::ptrdiff_t>(channels_) * x;
  }
  void read(i32 y, u8* to) const noexcept {
    if (isStepped_) {
      const u8* from = pixel(left_ * step_, y);
      const std::ptrdiff_t next = static_cast<std::ptrdiff_t>(channels_) * step_;
      for (i32 i = 0; i < count_; ++i, from += next, to += channels_) std::copy(from, from + channels_, to);
    } else if (channels_ == 4) {
      readColors(view_, left_ * step_, y, step_, count_, reinterpret_cast<Color*>(to));
    } else if (step_ == 1) {
      readRgb(view_, left_, y, count_, to);
    } else {
      for (i32 i = 0; i < count_; ++i, to += 3) readRgb(view_, (left_ + i) * step_, y, 1, to);
    }
  }

  const ImageView& view_;
  i32 left_;
  i32 count_;
  i32 step_;
  i32 channels_;
  bool isDirect_;
  bool isStepped_;
  std::vector<u8> work_;
};

// Sums rows as they are, each column for itself, and columns when a row of the result is whole: what is done for every
// pixel of the image is an addition in order.
class Reducer {
 public:
  Reducer(i32 from, i32 to, i32 all, i32 target, i32 channels, bool hasAlpha)
      : channels_(channels), hasAlpha_(hasAlpha) {
    wholeTargets(from, to, all, target, first_, end_);
    if (first_ >= end_) return;
    for (i32 i = first_; i < end_; ++i) {
      Columns columns;
      columns.begin = static_cast<i32>(i64{i} * all / target);
      columns.last = static_cast<i32>((i64{i + 1} * all - 1) / target);
      columns.atBegin = static_cast<float>(weightIn(columns.begin, all, target, i));
      columns.atLast = static_cast<float>(columns.last > columns.begin ? weightIn(columns.last, all, target, i) : 0);
      columns.begin -= from;
      columns.last -= from;
      columns_.push_back(columns);
    }
    sums_.assign(static_cast<std::size_t>(channels) * static_cast<u32>(to - from), 0);
    if (!hasAlpha) shorts_.assign(sums_.size(), 0);
  }

  i32 first() const noexcept { return first_; }
  i32 end() const noexcept { return end_; }

  void add(const u8* row, i32 weight) noexcept {
    weight_ += weight;
    if (hasAlpha_) return addWithAlpha(row, static_cast<float>(weight));
    if (weight < kWhole) return addPart(row, static_cast<float>(weight));
    u16* const to = shorts_.data();
    const std::size_t count = shorts_.size();
    for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<u16>(to[i] + row[i]);
    if (++inShorts_ == kMostInShort) takeShorts();
  }

  // All that was added, and begins anew.
  void finishRow(Color* colors) noexcept {
    takeShorts();
    for (const Columns& columns : columns_) {
      *colors++ = channels_ == 1 ? finish<1>(columns) : channels_ == 3 ? finish<3>(columns) : finish<4>(columns);
    }
    dropRow();
  }
  void dropRow() noexcept {
    std::fill(sums_.begin(), sums_.end(), 0.0F);
    std::fill(shorts_.begin(), shorts_.end(), u16{0});
    inShorts_ = weight_ = 0;
  }

 private:
  struct Columns {
    i32 begin;
    i32 last;
    float atBegin;
    float atLast;  // 0: there is one alone
  };

  void addPart(const u8* row, float weight) noexcept {
    float* const to = sums_.data();
    const std::size_t count = sums_.size();
    for (std::size_t i = 0; i < count; ++i) to[i] += static_cast<float>(row[i]) * weight;
  }

  void addWithAlpha(const u8* row, float weight) noexcept {
    for (float* to = sums_.data(); to != sums_.data() + sums_.size(); to += 4, row += 4) {
      const float part = static_cast<float>(row[3]) * weight;
      to[0] += static_cast<float>(row[0]) * part;
      to[1] += static_cast<float>(row[1]) * part;
      to[2] += static_cast<float>(row[2]) * part;
      to[3] += part;
    }
  }

  void takeShorts() noexcept {
    if (!inShorts_) return;
    float* const to = sums_.data();
    u16* const from = shorts_.data();
    const std::size_t count = shorts_.size();
    for (std::size_t i = 0; i < count; ++i) {
      to[i] += static_cast<float>(from[i]) * static_cast<float>(kWhole);
      from[i] = 0;
    }
    inShorts_ = 0;
  }

  template <int Channels>
  Color finish(const Columns& columns) const noexcept {
    const float* from = &sums_[static_cast<std::size_t>(Channels * columns.begin)];
    float sum[Channels];
    for (int c = 0; c < Channels; ++c) sum[c] = 0;
    const i32 between = columns.last - columns.begin - 1;
    for (i32 i = 0; i < between; ++i) {
      for (int c = 0; c < Channels; ++c) sum[c] += from[Channels * (i + 1) + c];
    }
    for (int c = 0; c < Channels; ++c) {
      sum[c] = sum[c] * static_cast<float>(kWhole) + from[c] * columns.atBegin +
               from[Channels * (columns.last - columns.begin) + c] * columns.atLast;
    }
    const float area = (columns.atBegin + columns.atLast + static_cast<float>(kWhole * std::max(between, 0))) *
                       static_cast<float>(weight_);
    const auto level = [](float value) { return static_cast<u32>(std::min(value, 255.0F) + 0.5F); };
    if constexpr (Channels == 1) {
      const u32 grey = level(sum[0] / area);
      return rgb(grey, grey, grey);
    } else {
      float alpha = 255;
      float scale = 1 / area;
      if constexpr (Channels == 4) {
        if (hasAlpha_) {
          alpha = sum[3] / area;
          scale = sum[3] > 0 ? 1 / sum[3] : 0;
        }
      }
      return argb(level(alpha), level(sum[2] * scale), level(sum[1] * scale), level(sum[0] * scale));
    }
  }

  i32 channels_;
  bool hasAlpha_;
  i32 first_ = 0;
  i32 end_ = 0;
  i32 inShorts_ = 0;  // rows
  i32 weight_ = 0;    // of the rows in the sums
  std::vector<Columns> columns_;
  std::vector<u16> shorts_;  // of whole rows
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

ImageBits reduced(const ImageView& view, const PixelBox& seen, i32 width, i32 height, bool hasAlpha, i32 step) {
  ImageBits result;
  const auto stepped = [step](i32 pixels) { return static_cast<i32>((i64{pixels} + step - 1) / step); };
  const PixelBox read = {seen.left / step, seen.top / step, stepped(seen.right), stepped(seen.bottom)};
  const i32 allWide = stepped(view.width);
  const i32 allHigh = stepped(view.height);
  Rows rows(view, read.left, read.right - read.left, step, hasAlpha);
  Reducer reducer(read.left, read.right, allWide, width, rows.channels(), hasAlpha);
  PixelBox whole = {reducer.first(), 0, reducer.end(), 0};
  wholeTargets(read.top, read.bottom, allHigh, height, whole.top, whole.bottom);
  if (whole.left >= whole.right || whole.top >= whole.bottom) return result;
  allocatePixels(result, width, height, 32);
  result.hasAlpha = hasAlpha;
  result.seen = whole;
  for (i32 y = read.top; y < read.bottom; ++y) {
    const Share share = shareOf(y, allHigh, height);
    const u8* const row = rows.at(y);
    reducer.add(row, share.weight);
    if (i64{y + 1} * height < i64{share.target + 1} * allHigh) continue;
    if (share.target >= whole.top && share.target < whole.bottom) {
      reducer.finishRow(reinterpret_cast<Color*>(result.converted.data() +
                                                 static_cast<std::ptrdiff_t>(result.strideBytes) * share.target) +
                        whole.left);
    } else {
      reducer.dropRow();
    }
    if (share.weight < kWhole) reducer.add(row, kWhole - share.weight);
  }
  return result;
}

}  // namespace corvix
