// Images made smaller: every pixel of the result is the average of the area that it shows, weighted by alpha.
#include "graphics/images/ImageBits_p.h"
#include "graphics/images/WideLoops_p.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

#include <emmintrin.h>

namespace corvix {

namespace {

constexpr i32 kWhole = 256;          // the weight of a pixel that lies in one of the result with all of itself
constexpr i32 kMostToOne = 1 << 15;  // pixels of a row that go into one
constexpr i32 kMostInShort = 257;    // bytes whose sum fits 16 bits

// Where a pixel of the image goes: so much into `target`, the rest into the next.
struct Share {
  i32 target;
  i32 weight;
  friend bool operator==(const Share& a, const Share& b) noexcept {
    return a.target == b.target && a.weight == b.weight;
  }
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
  bool stay() const noexcept { return isDirect_; }  // what `at` answers is good after the next call

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
  template <int Channels>
  void readStepped(const u8* from, u8* to) const noexcept {
    const std::ptrdiff_t next = static_cast<std::ptrdiff_t>(Channels) * step_;
    for (i32 i = 0; i < count_; ++i, from += next, to += Channels) std::memcpy(to, from, Channels);
  }
  void read(i32 y, u8* to) const noexcept {
    if (isStepped_) {
      const u8* const from = pixel(left_ * step_, y);
      if (channels_ == 1) return readStepped<1>(from, to);
      return channels_ == 3 ? readStepped<3>(from, to) : readStepped<4>(from, to);
    }
    if (channels_ == 4) {
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
  static constexpr i32 kTogether = 4;  // rows that are added at once

  Reducer(i32 from, i32 to, i32 all, i32 target, i32 channels, bool hasAlpha)
      : channels_(channels), hasAlpha_(hasAlpha) {
    wholeTargets(from, to, all, target, first_, end_);
    if (first_ >= end_) return;
    // Of every pixel of the result, so many columns behind its first are its own with all of themselves; two more may
    // be with a part. One count for all keeps the loop over them foreseeable.
    between_ = std::max((all + target - 1) / target - 2, 0);
    for (i32 i = first_; i < end_; ++i) {
      const auto begin = static_cast<i32>(i64{i} * all / target);
      const auto last = static_cast<i32>((i64{i + 1} * all - 1) / target);
      const auto weightAt = [&](i32 column) { return column <= last ? weightIn(column, all, target, i) : 0; };
      i32 weights = between_ * kWhole;
      Columns columns;
      columns.begin = begin - from;
      for (std::size_t place = 0; place < std::size(columns.weights); ++place) {
        const i32 weight = weightAt(place ? begin + between_ + static_cast<i32>(place) : begin);
        columns.weights[place] = static_cast<float>(weight);
        weights += weight;
      }
      columns.share = 1 / static_cast<float>(weights);
      columns_.push_back(columns);
    }
    count_ = static_cast<std::size_t>(channels) * static_cast<u32>(to - from);
    sums_.assign(count_ + 8, 0);  // registers read behind the last
    if (!hasAlpha) whole_.assign(count_ + 8, 0);
  }

  i32 first() const noexcept { return first_; }
  i32 end() const noexcept { return end_; }

  void add(const u8* row, i32 weight) noexcept {
    weight_ += weight;
    if (hasAlpha_) return addWithAlpha(row, static_cast<float>(weight));
    if (weight < kWhole) return addWeighted(row, static_cast<float>(weight));
    makeRoom(1);
    u16* const to = whole_.data();
    for (std::size_t i = 0; i < count_; ++i) to[i] = static_cast<u16>(to[i] + row[i]);
  }

  // Whole ones of an image without alpha.
  void addTogether(const u8* const (&rows)[kTogether]) noexcept {
    weight_ += kTogether * kWhole;
    makeRoom(kTogether);
    wide::addRows(rows, count_, whole_.data());
  }

  // All that was added, and begins anew.
  void finishRow(Color* colors) noexcept {
    const float share = 1 / static_cast<float>(weight_);
    if (hasSums_) {
      if (inWhole_) takeWhole();
      finish(sums_.data(), share, colors);
    } else {
      finish(whole_.data(), share * static_cast<float>(kWhole), colors);
    }
    dropRow();
  }
  void dropRow() noexcept {
    if (inWhole_) std::fill(whole_.begin(), whole_.end(), u16{0});
    if (hasSums_) std::fill(sums_.begin(), sums_.end(), 0.0F);
    hasSums_ = false;
    inWhole_ = weight_ = 0;
  }

 private:
  struct Columns {
    i32 begin;
    float weights[3];  // of the first, and of the two behind those that are there with all of themselves
    float share;       // one by the weights of all
  };

  template <class Value>
  void addWeighted(const Value* values, float weight) noexcept {
    float* const to = sums_.data();
    for (std::size_t i = 0; i < count_; ++i) to[i] += static_cast<float>(values[i]) * weight;
    hasSums_ = true;
  }

  // Before so many rows are added to the whole ones.
  void makeRoom(i32 rows) noexcept {
    if (inWhole_ + rows > kMostInShort) takeWhole();
    inWhole_ += rows;
  }
  void takeWhole() noexcept {
    addWeighted(whole_.data(), static_cast<float>(kWhole));
    std::fill(whole_.begin(), whole_.end(), u16{0});
    inWhole_ = 0;
  }

  void addWithAlpha(const u8* row, float weight) noexcept {
    hasSums_ = true;
    for (float* to = sums_.data(); to != sums_.data() + count_; to += 4, row += 4) {
      const float part = static_cast<float>(row[3]) * weight;
      to[0] += static_cast<float>(row[0]) * part;
      to[1] += static_cast<float>(row[1]) * part;
      to[2] += static_cast<float>(row[2]) * part;
      to[3] += part;
    }
  }

  static __m128 four(const float* values) noexcept { return _mm_loadu_ps(values); }
  static __m128 four(const u16* values) noexcept {
    const __m128i shorts = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(values));
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(shorts, _mm_setzero_si128()));
  }

  template <class Value>
  Color finishGray(const Value* values, const Columns& columns, float share) const noexcept {
    const Value* const first = values + columns.begin;
    std::conditional_t<std::is_same_v<Value, u16>, i32, float> between = 0;  // kMostToOne of 16 bits fit
    for (i32 i = 1; i <= between_; ++i) between += first[i];
    const auto part = [&](i32 place, i32 weight) { return static_cast<float>(first[place]) * columns.weights[weight]; };
    const float sum = static_cast<float>(between) * static_cast<float>(kWhole) + part(0, 0) + part(between_ + 1, 1) +
                      part(between_ + 2, 2);
    return rgb(1, 1, 1) * static_cast<u32>(static_cast<i32>(std::min(sum * share, 255.0F) + 0.5F)) | kBlack;
  }

  // Blue, green, red and what is behind them; that is alpha where there is some.
  template <int Channels, class Value>
  Color finishColors(const Value* values, const Columns& columns, float share) const noexcept {
    const Value* const first = values + static_cast<std::ptrdiff_t>(Channels) * columns.begin;
    __m128 sum = _mm_setzero_ps();
    for (i32 i = 1; i <= between_; ++i) sum = _mm_add_ps(sum, four(first + Channels * i));
    sum = _mm_mul_ps(sum, _mm_set1_ps(static_cast<float>(kWhole)));
    for (const i32 place : {0, 1, 2}) {
      const Value* const at = first + Channels * (place ? between_ + place : 0);
      sum = _mm_add_ps(sum, _mm_mul_ps(four(at), _mm_set1_ps(columns.weights[place])));
    }
    __m128 shares = _mm_set1_ps(share);
    if (hasAlpha_) {
      const float alpha = _mm_cvtss_f32(_mm_shuffle_ps(sum, sum, 3));
      const float each = alpha > 0 ? 1 / alpha : 0;
      shares = _mm_setr_ps(each, each, each, share);
    }
    const __m128 levels = _mm_min_ps(_mm_mul_ps(sum, shares), _mm_set1_ps(255));
    const __m128i numbers = _mm_cvttps_epi32(_mm_add_ps(levels, _mm_set1_ps(0.5F)));
    const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(numbers, numbers), numbers);
    const auto color = static_cast<Color>(_mm_cvtsi128_si32(bytes));
    return hasAlpha_ ? color : color | kBlack;
  }

  template <class Value>
  void finish(const Value* values, float share, Color* colors) const noexcept {
    for (const Columns& columns : columns_) {
      const float each = share * columns.share;
      *colors++ = channels_ == 1   ? finishGray(values, columns, each)
                  : channels_ == 3 ? finishColors<3>(values, columns, each)
                                   : finishColors<4>(values, columns, each);
    }
  }

  i32 channels_;
  bool hasAlpha_;
  bool hasSums_ = false;
  i32 first_ = 0;
  i32 end_ = 0;
  i32 inWhole_ = 0;  // rows
  i32 between_ = 0;  // columns
  i32 weight_ = 0;   // of all rows in the sums
  std::size_t count_ = 0;
  std::vector<Columns> columns_;
  std::vector<u16> whole_;  // sums of whole rows that are not in the others yet
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

bool reduceRows(const ImageView& view, const PixelBox& seen, i32 width, i32 height, bool hasAlpha, i32 step,
                PixelBox& whole, const TakeRow& take) {
  const auto stepped = [step](i32 pixels) { return static_cast<i32>((i64{pixels} + step - 1) / step); };
  const PixelBox read = {seen.left / step, seen.top / step, stepped(seen.right), stepped(seen.bottom)};
  const i32 allWide = stepped(view.width);
  const i32 allHigh = stepped(view.height);
  Rows rows(view, read.left, read.right - read.left, step, hasAlpha);
  Reducer reducer(read.left, read.right, allWide, width, rows.channels(), hasAlpha);
  whole.left = reducer.first();
  whole.right = reducer.end();
  wholeTargets(read.top, read.bottom, allHigh, height, whole.top, whole.bottom);
  if (whole.left >= whole.right || whole.top >= whole.bottom) return false;
  std::vector<Color> colors(static_cast<std::size_t>(whole.right - whole.left));
  const bool isTogether = rows.stay() && !hasAlpha;
  for (i32 y = read.top; y < read.bottom;) {
    const Share share = shareOf(y, allHigh, height);
    const i32 next = y + Reducer::kTogether;
    const u8* const row = rows.at(y);
    if (isTogether && next <= read.bottom && share == shareOf(next - 1, allHigh, height) && share.weight == kWhole) {
      reducer.addTogether({row, rows.at(y + 1), rows.at(y + 2), rows.at(y + 3)});
      y = next;
    } else {
      reducer.add(row, share.weight);
      ++y;
    }
    if (i64{y} * height < i64{share.target + 1} * allHigh) continue;  // more goes there
    if (share.target >= whole.top && share.target < whole.bottom) {
      reducer.finishRow(colors.data());
      take(share.target, colors.data());
    } else {
      reducer.dropRow();
    }
    if (share.weight < kWhole) reducer.add(row, kWhole - share.weight);
  }
  return true;
}

ImageBits reduced(const ImageView& view, const PixelBox& seen, i32 width, i32 height, bool hasAlpha, i32 step) {
  ImageBits result;
  PixelBox whole;
  const auto take = [&](i32 y, const Color* colors) {
    if (!result.pixels) allocatePixels(result, width, height, 32);
    std::memcpy(result.converted.data() + static_cast<std::ptrdiff_t>(result.strideBytes) * y +
                    4 * static_cast<std::ptrdiff_t>(whole.left),
                colors, 4 * static_cast<std::size_t>(whole.right - whole.left));
  };
  if (reduceRows(view, seen, width, height, hasAlpha, step, whole, take)) {
    result.hasAlpha = hasAlpha;
    result.seen = whole;
  }
  return result;
}

}  // namespace corvix
