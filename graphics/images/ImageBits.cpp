#include "graphics/images/ImageBits.h"

#include "graphics/images/CmykConversion.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

Color greyOf(u32 level) noexcept { return rgb(level, level, level); }

u32 indexAt(const u8* row, i32 x, i32 bitsPerPixel) noexcept {
  const i64 bit = i64{x} * bitsPerPixel;
  return static_cast<u32>(row[bit / 8] >> (8 - bitsPerPixel - bit % 8)) & ((1U << bitsPerPixel) - 1);
}

void allocate(ImageBits& bits, i32 width, i32 height, i32 bitsPerPixel) {
  bits.width = width;
  bits.height = height;
  bits.bitsPerPixel = bitsPerPixel;
  bits.strideBytes = static_cast<i32>((i64{width} * bitsPerPixel + 31) / 32 * 4);
  bits.converted.resize(static_cast<std::size_t>(bits.strideBytes) * static_cast<std::size_t>(height));
  bits.pixels = bits.converted.data();
}

// GDI and GDI+ take it as it is.
bool isUsable(const ImageView& view) noexcept {
  if (view.model == ColorModel::Cmyk || view.bitsPerPixel == 2) return false;
  return view.model != ColorModel::Indexed ||
         std::all_of(view.palette, view.palette + view.paletteSize, [](Color color) { return alphaOf(color) == 255; });
}

// 32-bit pixels: the address of one.
Color* argbRow(ImageBits& bits, i32 y) noexcept {
  return reinterpret_cast<Color*>(bits.converted.data() + static_cast<std::ptrdiff_t>(bits.strideBytes) * y);
}

}  // namespace

bool viewOf(IAGImage* image, ImageView& view) noexcept {
  if (!image) return false;
  view = {image->width(),       image->height(), image->colorModel(), image->bitsPerPixel(),
          image->strideBytes(), image->row(0),   image->palette(),    image->paletteSize()};
  return view.rows && view.width > 0 && view.height > 0;
}

void readColors(const ImageView& view, i32 x, i32 y, i32 step, i32 count, Color* colors) noexcept {
  const u8* const row = view.rows + static_cast<std::ptrdiff_t>(view.strideBytes) * y;
  const CmykMode mode = quality().cmykMode();
  for (i32 i = 0; i < count; ++i, x += step) {
    switch (view.model) {
      case ColorModel::Indexed: {
        const u32 index = indexAt(row, x, view.bitsPerPixel);
        colors[i] = index < static_cast<u32>(view.paletteSize) ? view.palette[index] : kBlack;
        break;
      }
      case ColorModel::Gray:
        colors[i] = greyOf(row[x]);
        break;
      case ColorModel::Rgb:
        colors[i] = rgb(row[3 * x + 2], row[3 * x + 1], row[3 * x]);
        break;
      case ColorModel::Argb:
        colors[i] = argb(row[4 * x + 3], row[4 * x + 2], row[4 * x + 1], row[4 * x]);
        break;
      case ColorModel::Cmyk: {
        u8 bgr[3];
        cmykToRgb(row + 4 * x, 1, mode, bgr);
        colors[i] = rgb(bgr[2], bgr[1], bgr[0]);
        break;
      }
    }
  }
}

bool makeBits(IAGImage* image, i64 mostPixels, ImageBits& bits) {
  ImageView view;
  if (!viewOf(image, view)) return false;
  i32 step = 1;
  while ((i64{view.width} + step - 1) / step * ((i64{view.height} + step - 1) / step) > mostPixels) ++step;
  const i32 width = (view.width + step - 1) / step;
  const i32 height = (view.height + step - 1) / step;
  if (step == 1 && isUsable(view)) {
    bits.width = width;
    bits.height = height;
    bits.bitsPerPixel = view.bitsPerPixel;
    bits.strideBytes = view.strideBytes;
    bits.pixels = view.rows;
    bits.hasAlpha = view.model == ColorModel::Argb;
    if (view.model == ColorModel::Indexed) bits.palette.assign(view.palette, view.palette + view.paletteSize);
    if (view.model == ColorModel::Gray) {
      for (u32 i = 0; i < 256; ++i) bits.palette.push_back(greyOf(i));
    }
    return true;
  }
  if (view.model == ColorModel::Cmyk && step == 1) {
    allocate(bits, width, height, 24);
    for (i32 y = 0; y < height; ++y) {
      cmykToRgb(view.rows + static_cast<std::ptrdiff_t>(view.strideBytes) * y, static_cast<std::size_t>(width),
                quality().cmykMode(), bits.converted.data() + static_cast<std::ptrdiff_t>(bits.strideBytes) * y);
    }
    return true;
  }
  allocate(bits, width, height, 32);
  bits.hasAlpha = view.model == ColorModel::Argb || view.model == ColorModel::Indexed;
  for (i32 y = 0; y < height; ++y) readColors(view, 0, y * step, step, width, argbRow(bits, y));
  return true;
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
  allocate(result, bits.width, bits.height, 32);
  result.hasAlpha = bits.hasAlpha;
  for (i32 y = 0; y < bits.height; ++y) {
    Color* const row = argbRow(result, y);
    for (i32 x = 0; x < bits.width; ++x) row[x] = colorAt(bits, x, y);
  }
  return result;
}

ImageBits toArgb(const ImageView& view) {
  ImageBits result;
  allocate(result, view.width, view.height, 32);
  result.hasAlpha = true;
  for (i32 y = 0; y < view.height; ++y) readColors(view, 0, y, 1, view.width, argbRow(result, y));
  return result;
}

ImageBits turned(const ImageBits& bits, ImageTurn turn) {
  const auto number = static_cast<u32>(turn) & 7;
  const u32 quarters = number & 3;
  const bool isFlipped = number >= 4;
  const bool isUpright = quarters % 2 == 0;
  ImageBits result;
  allocate(result, isUpright ? bits.width : bits.height, isUpright ? bits.height : bits.width, 32);
  result.hasAlpha = bits.hasAlpha;
  for (i32 y = 0; y < result.height; ++y) {
    Color* const row = argbRow(result, y);
    for (i32 x = 0; x < result.width; ++x) {
      const i32 turnedX = isFlipped ? result.width - 1 - x : x;
      i32 fromX = turnedX;
      i32 fromY = y;
      if (quarters == 1) {
        fromX = y;
        fromY = bits.height - 1 - turnedX;
      } else if (quarters == 2) {
        fromX = bits.width - 1 - turnedX;
        fromY = bits.height - 1 - y;
      } else if (quarters == 3) {
        fromX = bits.width - 1 - y;
        fromY = turnedX;
      }
      row[x] = colorAt(bits, fromX, fromY);
    }
  }
  return result;
}

namespace {

// Between four pixels around a place in the image; weighted by alpha, so that what is transparent has no colour.
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

ImageBits transformed(const ImageBits& bits, const Matrix& unitToDevice, const PixelBox& area, bool smooth, i32& left,
                      i32& top) {
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
  allocate(result, static_cast<i32>(right) - left, static_cast<i32>(bottom) - top, 32);
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
