#include "graphics/images/ImageBits_p.h"

#include "graphics/images/AGImage_p.h"
#include "graphics/images/CmykConversion_p.h"
#include "graphics/images/ImageCopies_p.h"
#include "graphics/images/WideLoops_p.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace corvix {

namespace {

Color greyOf(u32 level) noexcept { return rgb(level, level, level); }

u32 indexAt(const u8* row, i32 x, i32 bitsPerPixel) noexcept {
  const i64 bit = i64{x} * bitsPerPixel;
  return static_cast<u32>(row[bit / 8] >> (8 - bitsPerPixel - bit % 8)) & ((1U << bitsPerPixel) - 1);
}

// GDI and GDI+ take it as it is.
bool isUsable(const ImageView& view) noexcept {
  if (view.model == ColorModel::Cmyk || view.bitsPerPixel == 2 || view.firstPixel) return false;
  return view.model != ColorModel::Indexed || !hasAlpha(view);
}

// 32-bit pixels: the address of one.
Color* argbRow(ImageBits& bits, i32 y) noexcept {
  return reinterpret_cast<Color*>(bits.converted.data() + static_cast<std::ptrdiff_t>(bits.strideBytes) * y);
}

}  // namespace

void allocatePixels(ImageBits& bits, i32 width, i32 height, i32 bitsPerPixel) {
  bits.width = width;
  bits.height = height;
  bits.bitsPerPixel = bitsPerPixel;
  bits.strideBytes = static_cast<i32>((i64{width} * bitsPerPixel + 31) / 32 * 4);
  bits.seen = {0, 0, width, height};
  bits.converted.allocate(static_cast<std::size_t>(bits.strideBytes) * static_cast<std::size_t>(height));
  bits.pixels = bits.converted.data();
}

bool viewOf(IAGImage* image, ImageView& view) noexcept {
  if (!image) return false;
  auto* const own = corvix::query<AGImage>(image);  // whose rows do not thaw
  view = {image->width(),           image->height(),      image->colorModel(),
          image->bitsPerPixel(),    image->strideBytes(), own ? own->readRow(0) : image->row(0),
          image->palette(),         image->paletteSize(), 0,
          own ? own->finished() : 0};
  return view.rows && view.width > 0 && view.height > 0;
}

bool hasAlpha(const ImageView& view) noexcept {
  return view.model == ColorModel::Argb ||
         (view.model == ColorModel::Indexed && std::any_of(view.palette, view.palette + view.paletteSize,
                                                           [](Color color) { return alphaOf(color) != 255; }));
}

bool cutTo(const PixelBox& part, ImageView& view) noexcept {
  if (part.left < 0 || part.top < 0 || part.right > view.width || part.bottom > view.height ||
      part.left >= part.right || part.top >= part.bottom) {
    return false;
  }
  const i64 bit = i64{part.left} * view.bitsPerPixel;
  view.rows += static_cast<std::ptrdiff_t>(view.strideBytes) * part.top + static_cast<std::ptrdiff_t>(bit / 8);
  view.firstPixel = static_cast<i32>(bit % 8 / view.bitsPerPixel);
  view.width = part.right - part.left;
  view.height = part.bottom - part.top;
  return true;
}

namespace {

const u8* rowAt(const ImageView& view, i32 x, i32 y) noexcept {
  const i64 bit = i64{view.firstPixel + x} * view.bitsPerPixel;
  return view.rows + static_cast<std::ptrdiff_t>(view.strideBytes) * y + static_cast<std::ptrdiff_t>(bit / 8);
}

// Calls take(color) for `count` pixels of an indexed row from `x` on, every `step`th.
template <class Take>
void eachIndexed(const ImageView& view, i32 x, i32 y, i32 step, i32 count, Take take) noexcept {
  const u8* const row = view.rows + static_cast<std::ptrdiff_t>(view.strideBytes) * y;
  for (i32 i = 0; i < count; ++i, x += step) {
    const u32 index = indexAt(row, x + view.firstPixel, view.bitsPerPixel);
    take(index < static_cast<u32>(view.paletteSize) ? view.palette[index] : kBlack);
  }
}

}  // namespace

void readColors(const ImageView& view, i32 x, i32 y, i32 step, i32 count, Color* colors) noexcept {
  const u8* row = rowAt(view, x, y);
  switch (view.model) {
    case ColorModel::Indexed:
      return eachIndexed(view, x, y, step, count, [&colors](Color color) { *colors++ = color; });
    case ColorModel::Gray:
      for (i32 i = 0; i < count; ++i, row += step) colors[i] = greyOf(*row);
      return;
    case ColorModel::Rgb:
      for (i32 i = 0; i < count; ++i, row += 3 * step) colors[i] = rgb(row[2], row[1], row[0]);
      return;
    case ColorModel::Argb:
      for (i32 i = 0; i < count; ++i, row += 4 * step) colors[i] = argb(row[3], row[2], row[1], row[0]);
      return;
    case ColorModel::Cmyk: {
      const CmykMode mode = quality().cmykMode();
      for (i32 i = 0; i < count; ++i, row += 4 * step) {
        u8 bgr[3];
        cmykToRgb(row, 1, mode, bgr);
        colors[i] = rgb(bgr[2], bgr[1], bgr[0]);
      }
      return;
    }
  }
}

void readRgb(const ImageView& view, i32 x, i32 y, i32 count, u8* bgr) noexcept {
  const u8* row = rowAt(view, x, y);
  switch (view.model) {
    case ColorModel::Indexed:
      return eachIndexed(view, x, y, 1, count, [&bgr](Color color) {
        *bgr++ = static_cast<u8>(blueOf(color));
        *bgr++ = static_cast<u8>(greenOf(color));
        *bgr++ = static_cast<u8>(redOf(color));
      });
    case ColorModel::Gray:
      for (i32 i = 0; i < count; ++i, bgr += 3) bgr[0] = bgr[1] = bgr[2] = row[i];
      return;
    case ColorModel::Rgb:
      std::memcpy(bgr, row, 3 * static_cast<std::size_t>(count));
      return;
    case ColorModel::Argb:
      for (i32 i = 0; i < count; ++i, bgr += 3, row += 4) std::memcpy(bgr, row, 3);
      return;
    case ColorModel::Cmyk:
      return cmykToRgb(row, static_cast<std::size_t>(count), quality().cmykMode(), bgr);
  }
}

void rgbToGray(const u8* bgr, std::size_t pixels, u8* gray) noexcept {
  for (std::size_t i = wide::rgbToGray(bgr, pixels, gray); i < pixels; ++i) {
    const u8* const from = bgr + 3 * i;
    gray[i] = static_cast<u8>((from[2] * 299 + from[1] * 587 + from[0] * 114 + 500) / 1000);
  }
}

void ImageBits::recolor(const Recolor& change) {
  for (i32 y = seen.top; y < seen.bottom; ++y) {
    Color* const colors = argbRow(*this, y);
    for (i32 x = seen.left; x < seen.right; ++x) {
      const Color color = hasAlpha ? colors[x] : colors[x] | kBlack;
      colors[x] = change(color);
    }
  }
  hasAlpha = true;
}

namespace {

i64 stepped(i32 count, i32 step) noexcept { return (i64{count} + step - 1) / step; }

}  // namespace

i32 stepFor(const PixelBox& part, i64 mostPixels, i32 mostStep) noexcept {
  i32 step = 1;
  while (step < mostStep &&
         stepped(part.right - part.left, step) * stepped(part.bottom - part.top, step) > mostPixels) {
    ++step;
  }
  return step;
}

ImageBits makeBits(const ImageView& view, const PixelBox& seen, i32 step) {
  ImageBits bits;
  if (step == 1 && isUsable(view)) {
    bits.width = view.width;
    bits.height = view.height;
    bits.bitsPerPixel = view.bitsPerPixel;
    bits.strideBytes = view.strideBytes;
    bits.pixels = view.rows;
    bits.seen = seen;
    bits.hasAlpha = view.model == ColorModel::Argb;
    if (view.model == ColorModel::Indexed) bits.palette.assign(view.palette, view.palette + view.paletteSize);
    if (view.model == ColorModel::Gray) {
      for (u32 i = 0; i < 256; ++i) bits.palette.push_back(greyOf(i));
    }
    return bits;
  }
  const bool isCmyk = view.model == ColorModel::Cmyk && step == 1;
  allocatePixels(bits, static_cast<i32>(stepped(view.width, step)), static_cast<i32>(stepped(view.height, step)),
                 isCmyk ? 24 : 32);
  bits.seen = {seen.left / step, seen.top / step, static_cast<i32>(stepped(seen.right, step)),
               static_cast<i32>(stepped(seen.bottom, step))};
  bits.hasAlpha = view.model == ColorModel::Argb || view.model == ColorModel::Indexed;
  const i32 left = bits.seen.left;
  const i32 count = bits.seen.right - left;
  for (i32 y = bits.seen.top; y < bits.seen.bottom; ++y) {
    if (isCmyk) {
      readRgb(view, left, y, count,
              bits.converted.data() + static_cast<std::ptrdiff_t>(bits.strideBytes) * y + 3 * left);
    } else {
      readColors(view, left * step, y * step, step, count, argbRow(bits, y) + left);
    }
  }
  return bits;
}

ImageBits bitsOf(const ImageView& view, const PixelBox& seen, i32 step) {
  if (!view.finished || (step == 1 && isUsable(view))) return makeBits(view, seen, step);
  return imageCopies().of(view, seen, static_cast<i32>(stepped(view.width, step)),
                          static_cast<i32>(stepped(view.height, step)), step,
                          [&](const PixelBox& part) { return makeBits(view, part, step); });
}

ImageBits reducedOf(const ImageView& view, const PixelBox& seen, i32 width, i32 height, i32 step) {
  const auto make = [&](const PixelBox& part) { return reduced(view, part, width, height, hasAlpha(view), step); };
  return view.finished ? imageCopies().of(view, seen, width, height, step, make) : make(seen);
}

ImageBits cutToSeen(const ImageBits& bits, PixelBox& part) {
  part = bits.seen;
  if (bits.bitsPerPixel < 8) part.left -= part.left % 8;
  ImageBits cut;
  cut.width = part.right - part.left;
  cut.height = part.bottom - part.top;
  cut.bitsPerPixel = bits.bitsPerPixel;
  cut.strideBytes = bits.strideBytes;
  cut.pixels = bits.row(part.top) + static_cast<std::ptrdiff_t>(i64{part.left} * bits.bitsPerPixel / 8);
  cut.seen = {0, 0, cut.width, cut.height};
  cut.hasAlpha = bits.hasAlpha;
  cut.palette = bits.palette;
  return cut;
}

Color colorAt(const ImageBits& bits, i32 x, i32 y) noexcept {
  const u8* const row = bits.row(y);
  if (bits.bitsPerPixel == 24) return rgb(row[3 * x + 2], row[3 * x + 1], row[3 * x]);
  if (bits.bitsPerPixel == 32) {
    return argb(bits.hasAlpha ? row[4 * x + 3] : 255, row[4 * x + 2], row[4 * x + 1], row[4 * x]);
  }
  const u32 index = indexAt(row, x, bits.bitsPerPixel);
  return index < bits.palette.size() ? bits.palette[index] : kBlack;
}

ImageBits toArgb(const ImageBits& bits) {
  ImageBits result;
  allocatePixels(result, bits.width, bits.height, 32);
  result.seen = bits.seen;
  result.hasAlpha = bits.hasAlpha;
  for (i32 y = bits.seen.top; y < bits.seen.bottom; ++y) {
    Color* const row = argbRow(result, y);
    for (i32 x = bits.seen.left; x < bits.seen.right; ++x) row[x] = colorAt(bits, x, y);
  }
  return result;
}

Matrix turnMatrix(ImageTurn turn) noexcept {
  constexpr Matrix kQuarters[4] = {{}, {0, 1, -1, 0, 1, 0}, {-1, 0, 0, -1, 1, 1}, {0, -1, 1, 0, 0, 1}};
  const auto number = static_cast<u32>(turn) & 7;
  return number < 4 ? kQuarters[number] : kQuarters[number & 3].then({-1, 0, 0, 1, 1, 0});
}

bool isAlongAxes(const Matrix& unitToDevice) noexcept {
  constexpr double kClose = 1e-6;  // pixels
  const Matrix& unit = unitToDevice;
  return std::max(std::abs(unit.b), std::abs(unit.c)) < kClose || std::max(std::abs(unit.a), std::abs(unit.d)) < kClose;
}

ImageTurn turnOf(const Matrix& unitToDevice) noexcept {
  const Matrix& unit = unitToDevice;
  u32 turn = 0;
  // The one whose sides go the same ways.
  while (turn < 7) {
    const Matrix one = turnMatrix(static_cast<ImageTurn>(turn));
    if (one.a * unit.a + one.c * unit.c > 0 && one.b * unit.b + one.d * unit.d > 0 &&
        swapsSides(static_cast<ImageTurn>(turn)) == (std::abs(unit.b) > std::abs(unit.a))) {
      break;
    }
    ++turn;
  }
  return static_cast<ImageTurn>(turn);
}

Matrix uprightBox(const Matrix& unitToDevice) noexcept {
  const Matrix& unit = unitToDevice;
  const bool isSwapped = swapsSides(turnOf(unit));
  const double width = isSwapped ? unit.c : unit.a;
  const double height = isSwapped ? unit.b : unit.d;
  return {std::abs(width), 0, 0, std::abs(height), unit.e + std::min(width, 0.0), unit.f + std::min(height, 0.0)};
}

ImageBits turned(const ImageBits& bits, ImageTurn turn) {
  ImageBits result;
  allocatePixels(result, swapsSides(turn) ? bits.height : bits.width, swapsSides(turn) ? bits.width : bits.height, 32);
  result.hasAlpha = bits.hasAlpha;
  // From pixel to pixel instead of from unit square to unit square.
  const Matrix unit = turnMatrix(turn);
  const auto across = static_cast<i32>(unit.a + unit.c < 0) * (result.width - 1);
  const auto down = static_cast<i32>(unit.b + unit.d < 0) * (result.height - 1);
  const auto place = [&](i32 x, i32 y) {
    return std::pair{static_cast<i32>(unit.a) * x + static_cast<i32>(unit.c) * y + across,
                     static_cast<i32>(unit.b) * x + static_cast<i32>(unit.d) * y + down};
  };
  const PixelBox& seen = bits.seen;
  for (i32 y = seen.top; y < seen.bottom; ++y) {
    for (i32 x = seen.left; x < seen.right; ++x) {
      const auto [toX, toY] = place(x, y);
      argbRow(result, toY)[toX] = colorAt(bits, x, y);
    }
  }
  const auto [x1, y1] = place(seen.left, seen.top);
  const auto [x2, y2] = place(seen.right - 1, seen.bottom - 1);
  result.seen = {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2) + 1, std::max(y1, y2) + 1};
  return result;
}

namespace {

// Bilinear interpolation between the four pixels around a place; weighted by alpha, so that what is transparent has no
// colour.
Color blend(const ImageBits& bits, double x, double y) noexcept {
  const double left = std::floor(x - 0.5);
  const double top = std::floor(y - 0.5);
  double sums[4] = {};
  for (int i = 0; i < 4; ++i) {
    const double partX = i & 1 ? x - 0.5 - left : 1 - (x - 0.5 - left);
    const double partY = i & 2 ? y - 0.5 - top : 1 - (y - 0.5 - top);
    const i32 atX = std::clamp(static_cast<i32>(left) + (i & 1), 0, bits.width - 1);
    const i32 atY = std::clamp(static_cast<i32>(top) + (i >> 1), 0, bits.height - 1);
    const Color color = colorAt(bits, atX, atY);
    const double weight = partX * partY * alphaOf(color);
    sums[0] += weight;
    sums[1] += weight * redOf(color);
    sums[2] += weight * greenOf(color);
    sums[3] += weight * blueOf(color);
  }
  if (sums[0] <= 0) return 0;
  const auto level = [&](double sum) { return static_cast<u32>(sum / sums[0] + 0.5); };
  return argb(static_cast<u32>(sums[0] + 0.5), level(sums[1]), level(sums[2]), level(sums[3]));
}

}  // namespace

Matrix onWholePixels(const Matrix& unitToDevice) noexcept {
  const Matrix box = uprightBox(unitToDevice);
  const auto rounded = [](double edge) { return std::floor(edge + 0.5); };
  const double left = rounded(box.e);
  const double top = rounded(box.f);
  const Matrix whole = {rounded(box.e + box.a) - left, 0, 0, rounded(box.f + box.d) - top, left, top};
  return turnMatrix(turnOf(unitToDevice)).then(whole);
}

ImageBits transformed(const ImageBits& bits, const Matrix& unit, const PixelBox& area, bool smooth, i32& left,
                      i32& top) {
  const Matrix unitToDevice = isAlongAxes(unit) ? onWholePixels(unit) : unit;
  const Point corners[4] = {unitToDevice.apply({0, 0}), unitToDevice.apply({1, 0}), unitToDevice.apply({0, 1}),
                            unitToDevice.apply({1, 1})};
  Box box = {corners[0].x, corners[0].y, corners[0].x, corners[0].y};
  for (const Point& p : corners) {
    box = {std::min(box.left, p.x), std::min(box.top, p.y), std::max(box.right, p.x), std::max(box.bottom, p.y)};
  }
  left = static_cast<i32>(std::max(std::floor(box.left), static_cast<double>(area.left)));
  top = static_cast<i32>(std::max(std::floor(box.top), static_cast<double>(area.top)));
  const double right = std::min(std::ceil(box.right), static_cast<double>(area.right));
  const double bottom = std::min(std::ceil(box.bottom), static_cast<double>(area.bottom));
  ImageBits result;
  if (!(right > left && bottom > top) || unitToDevice.determinant() == 0) return result;
  allocatePixels(result, static_cast<i32>(right) - left, static_cast<i32>(bottom) - top, 32);
  result.hasAlpha = true;
  const Matrix back = unitToDevice.inverse().then(Matrix::scaling(bits.width, bits.height));
  for (i32 y = 0; y < result.height; ++y) {
    Color* const row = argbRow(result, y);
    for (i32 x = 0; x < result.width; ++x) {
      const Point from = back.apply({left + x + 0.5, top + y + 0.5});
      if (!(from.x >= 0 && from.x < bits.width && from.y >= 0 && from.y < bits.height)) continue;
      row[x] = smooth ? blend(bits, from.x, from.y) : colorAt(bits, static_cast<i32>(from.x), static_cast<i32>(from.y));
    }
  }
  return result;
}

}  // namespace corvix
