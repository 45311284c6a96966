#include "plugins/smooth/Paint_p.h"

namespace corvix::smooth {

namespace {

i32 floorOf(double value) noexcept {
  const auto whole = static_cast<i32>(value);
  return whole - (whole > value);
}

i32 within(double value) noexcept { return floorOf(std::clamp(value, -1e9, 1e9)); }

Color between(Color from, Color to, double part) noexcept {
  const auto mix = [part](u32 a, u32 b) { return static_cast<u32>(std::lround(a + (double{1} * b - a) * part)); };
  return argb(mix(alphaOf(from), alphaOf(to)), mix(redOf(from), redOf(to)), mix(greenOf(from), greenOf(to)),
              mix(blueOf(from), blueOf(to)));
}

// Where a paint ends, a pixel is the average of sixteen places in it.
template <class Sample>
void readEdged(Point first, i32 count, Pixel* to, Sample sample) noexcept {
  bool isThere[2] = {};  // of the pixel's corners at the left
  for (i32 i = -1; i < count; ++i) {
    const double right = first.x + i + 0.5;
    const bool isNext[2] = {sample({right, first.y - 0.5}) != 0, sample({right, first.y + 0.5}) != 0};
    if (i >= 0) {
      const Point middle = {first.x + i, first.y};
      to[i] = sample(middle);
      const bool isOne = to[i] != 0;
      if (isThere[0] != isOne || isThere[1] != isOne || isNext[0] != isOne || isNext[1] != isOne) {
        u32 sums[4] = {};
        for (int place = 0; place < 16; ++place) {
          const int column = place % 4, row = place / 4;
          const Pixel pixel = sample({middle.x + (column - 1.5) / 4, middle.y + (row - 1.5) / 4});
          for (int part = 0; part < 4; ++part) sums[part] += pixel >> (8 * part) & 255;
        }
        to[i] = 0;
        for (int part = 0; part < 4; ++part) to[i] |= (sums[part] + 8) / 16 << (8 * part);
      }
    }
    isThere[0] = isNext[0];
    isThere[1] = isNext[1];
  }
}

}  // namespace

bool ColorRamp::make(const ColorStop* stops, i32 count, u32 extend) {
  if (!stops || count < 1 || count > IAGShading::kMostStops) return false;
  for (i32 i = 0; i < count; ++i) {
    if (!(stops[i].offset >= (i ? stops[i - 1].offset : 0) && stops[i].offset <= 1)) return false;
  }
  extend_ = extend;
  pixels_.resize(kSteps + 1);
  i32 next = 0;
  for (u32 i = 0; i <= kSteps; ++i) {
    const double offset = double{1} * i / kSteps;
    while (next < count && stops[next].offset <= offset) ++next;
    const ColorStop& after = stops[std::min(next, count - 1)];
    const ColorStop& before = stops[std::max(next - 1, 0)];
    const double apart = after.offset - before.offset;
    pixels_[i] =
        toPixel(apart > 0 ? between(before.color, after.color, (offset - before.offset) / apart) : before.color);
  }
  return true;
}

Pixel ColorRamp::at(double offset) const noexcept {
  if (!reaches(offset)) return 0;
  return pixels_[static_cast<std::size_t>(std::clamp(offset, 0.0, 1.0) * kSteps + 0.5)];
}

AxialPaint::AxialPaint(ColorRamp ramp, Point from, Point to, const Matrix& userToDevice) noexcept
    : ramp_(std::move(ramp)) {
  const Matrix back = userToDevice.inverse();
  const Point along = {to.x - from.x, to.y - from.y};
  const double length = std::hypot(along.x, along.y);  // no squares, which end sooner
  const Point unit = {along.x / length, along.y / length};
  perX_ = (back.a * unit.x + back.b * unit.y) / length;
  perY_ = (back.c * unit.x + back.d * unit.y) / length;
  base_ = ((back.e - from.x) * unit.x + (back.f - from.y) * unit.y) / length;
}

void AxialPaint::read(Point at, i32 count, Pixel* to) noexcept {
  if (!ramp_.reachesAll()) {
    return readEdged(at, count, to, [this](Point p) { return ramp_.at(p.x * perX_ + p.y * perY_ + base_); });
  }
  double offset = at.x * perX_ + at.y * perY_ + base_;
  if (perX_ == 0) return static_cast<void>(std::fill_n(to, count, ramp_.at(offset)));
  for (i32 i = 0; i < count; ++i, offset += perX_) to[i] = ramp_.at(offset);
}

// The circle through a point: |p - s d| = r + s g, the larger s that is there first.
Pixel RadialPaint::at(Point device) const noexcept {
  const Point user = back_.apply(device);
  const Point p = {user.x - from_.x, user.y - from_.y};
  const double a = across_.x * across_.x + across_.y * across_.y - grow_ * grow_;
  const double b = p.x * across_.x + p.y * across_.y + radius_ * grow_;
  const double c = p.x * p.x + p.y * p.y - radius_ * radius_;
  const auto isThere = [this](double s) { return radius_ + s * grow_ >= 0 && ramp_.reaches(s); };
  if (std::abs(a) < 1e-12) return b != 0 && isThere(c / (2 * b)) ? ramp_.at(c / (2 * b)) : 0;
  const double square = b * b - a * c;
  if (!(square >= 0)) return 0;
  const double root = std::sqrt(square);
  const double larger = std::max((b + root) / a, (b - root) / a);
  if (isThere(larger)) return ramp_.at(larger);
  const double smaller = std::min((b + root) / a, (b - root) / a);
  return isThere(smaller) ? ramp_.at(smaller) : 0;
}

void RadialPaint::read(Point first, i32 count, Pixel* to) noexcept {
  readEdged(first, count, to, [this](Point p) { return at(p); });
}

SampledPaint::SampledPaint(HeapVector<Pixel> own, const Picture& picture, const Matrix& deviceToPicture, Filter filter,
                           bool isRepeated) noexcept
    : own_(std::move(own)), picture_(picture), matrix_(deviceToPicture), filter_(filter), isRepeated_(isRepeated) {
  if (!own_.empty()) picture_.pixels = own_.data();
}

const Pixel* SampledPaint::row(i32 y) const noexcept {
  const PixelBox& box = picture_.box;
  if (isRepeated_) {
    const i32 height = box.bottom - box.top;
    y %= height;
    if (y < 0) y += height;
  } else {
    y = std::clamp(y, box.top, box.bottom - 1);
  }
  return picture_.pixels + picture_.stride * (y - box.top);
}

i32 SampledPaint::column(i32 x) const noexcept {
  const PixelBox& box = picture_.box;
  if (!isRepeated_) return std::clamp(x, box.left, box.right - 1) - box.left;
  const i32 width = box.right - box.left;
  x %= width;
  return x < 0 ? x + width : x;
}

Pixel SampledPaint::nearest(Point at) const noexcept { return row(within(at.y))[column(within(at.x))]; }

// By 256ths between the middles of four pixels.
Pixel SampledPaint::linear(Point at) const noexcept {
  const double x = std::clamp(at.x, -4e6, 4e6) * 256 - 128;
  const double y = std::clamp(at.y, -4e6, 4e6) * 256 - 128;
  const i32 left = floorOf(x);
  const i32 top = floorOf(y);
  const u32 partX = static_cast<u32>(left) & 255;
  const u32 partY = static_cast<u32>(top) & 255;
  const i32 column1 = column(left >> 8);
  const i32 column2 = column((left >> 8) + 1);
  const Pixel* const row1 = row(top >> 8);
  const Pixel* const row2 = row((top >> 8) + 1);
  const u32 weights[4] = {(256 - partX) * (256 - partY), partX * (256 - partY), (256 - partX) * partY, partX * partY};
  const Pixel pixels[4] = {row1[column1], row1[column2], row2[column1], row2[column2]};
  Pixel result = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    u32 sum = 0x8000;
    for (int i = 0; i < 4; ++i) sum += (pixels[i] >> shift & 255) * weights[i];
    result |= sum >> 16 << shift;
  }
  return result;
}

// Catmull-Rom.
Pixel SampledPaint::cubic(Point at) const noexcept {
  const auto weightsOf = [](float t, float(&weights)[4]) {
    weights[0] = ((-0.5F * t + 1) * t - 0.5F) * t;
    weights[1] = (1.5F * t - 2.5F) * t * t + 1;
    weights[2] = ((-1.5F * t + 2) * t + 0.5F) * t;
    weights[3] = (0.5F * t - 0.5F) * t * t;
  };
  const double x = std::clamp(at.x, -1e9, 1e9) - 0.5;
  const double y = std::clamp(at.y, -1e9, 1e9) - 0.5;
  const i32 left = floorOf(x);
  const i32 top = floorOf(y);
  float acrossX[4];
  float acrossY[4];
  weightsOf(static_cast<float>(x - left), acrossX);
  weightsOf(static_cast<float>(y - top), acrossY);
  float sums[4] = {};
  for (i32 j = 0; j < 4; ++j) {
    const Pixel* const from = row(top - 1 + j);
    for (i32 i = 0; i < 4; ++i) {
      const Pixel pixel = from[column(left - 1 + i)];
      const float weight = acrossX[i] * acrossY[j];
      for (int part = 0; part < 4; ++part) sums[part] += weight * static_cast<float>(pixel >> (8 * part) & 255);
    }
  }
  const auto level = [](float sum, float most) { return static_cast<u32>(std::clamp(sum, 0.0F, most) + 0.5F); };
  const u32 alpha = level(sums[3], 255);
  const auto most = static_cast<float>(alpha);
  return alpha << 24 | level(sums[2], most) << 16 | level(sums[1], most) << 8 | level(sums[0], most);
}

void SampledPaint::read(Point at, i32 count, Pixel* to) noexcept {
  Point p = matrix_.apply(at);
  const auto eachOne = [&](auto sample) {
    for (i32 i = 0; i < count; ++i) {
      to[i] = sample(p);
      p.x += matrix_.a;
      p.y += matrix_.b;
    }
  };
  switch (filter_) {
    case Filter::Nearest:
      return eachOne([this](Point q) { return nearest(q); });
    case Filter::Linear:
      return eachOne([this](Point q) { return linear(q); });
    case Filter::Cubic:
      return eachOne([this](Point q) { return cubic(q); });
  }
}

void PatternPaint::read(Point at, i32 count, Pixel* to) noexcept {
  i32 x = floorOf(at.x + origin_.x);
  const u8 bits = rows_[floorOf(at.y + origin_.y) & 7];
  for (i32 i = 0; i < count; ++i, ++x) to[i] = pixels_[bits >> (7 - (x & 7)) & 1];
}

}  // namespace corvix::smooth
