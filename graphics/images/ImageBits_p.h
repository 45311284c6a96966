// ImageBits: an image's pixels in a form that GDI and GDI+ take: 1, 4 or 8 bits with a palette, 24 or 32 bits. Those of
// the image itself where they can be used, else converted.
#pragma once

#include "graphics/IAGDC.h"
#include "graphics/images/PixelBuffer_p.h"

#include <functional>
#include <memory>
#include <vector>

namespace corvix {

using Recolor = std::function<Color(Color)>;

struct ImageBits {
  i32 width = 0;
  i32 height = 0;
  i32 bitsPerPixel = 0;
  i32 strideBytes = 0;
  const u8* pixels = nullptr;
  bool hasAlpha = false;         // 32 bits only
  std::vector<Color> palette;    // for up to 8 bits: as many as the pixels can name
  PixelBox seen = {0, 0, 0, 0};  // the pixels that count; others need not be there
  PixelBuffer converted;
  std::shared_ptr<const void> kept;  // what the pixels belong to, when that is a copy that is kept

  void recolor(const Recolor& change);  // what is seen, of converted 32 bits; it has alpha then
  const u8* row(i32 y) const noexcept { return pixels + static_cast<std::ptrdiff_t>(strideBytes) * y; }
};

// What an image, or a part of one, holds, through its interface. Null rows for an image that has none.
struct ImageView {
  i32 width;
  i32 height;
  ColorModel model;
  i32 bitsPerPixel;
  i32 strideBytes;
  const u8* rows;
  const Color* palette;
  i32 paletteSize;
  i32 firstPixel;    // where in the first byte of a row it begins, in pixels; 0 from 8 bits on
  u32 finished = 0;  // a number of its own for every frozen image; 0: nothing may be kept of it
  i64 ink = -1;      // the palette is that of a stencil of this colour; -1: its own
};
bool viewOf(IAGImage* image, ImageView& view) noexcept;
bool hasAlpha(const ImageView& view) noexcept;
inline PixelBox wholeOf(const ImageView& view) noexcept { return {0, 0, view.width, view.height}; }
bool cutTo(const PixelBox& part, ImageView& view) noexcept;  // false unless the part is within

// `count` pixels of a row from `x` on, every `step`th, as colours.
void readColors(const ImageView& view, i32 x, i32 y, i32 step, i32 count, Color* colors) noexcept;

// The same as blue, green and red, without alpha; from `x` on.
void readRgb(const ImageView& view, i32 x, i32 y, i32 count, u8* bgr) noexcept;
void rgbToGray(const u8* bgr, std::size_t pixels, u8* gray) noexcept;  // by 0.299, 0.587 and 0.114

ImageView viewOf(const ImageBits& bits) noexcept;

// Every how manyth pixel of a part is to be taken, across and down, for them to be no more than `mostPixels`; at most
// every `mostStep`th.
i32 stepFor(const PixelBox& part, i64 mostPixels, i32 mostStep) noexcept;

// Of those pixels that are seen; all but every `step`th is left out. Throws std::bad_alloc.
ImageBits makeBits(const ImageView& view, const PixelBox& seen, i32 step = 1);
// The same, or what was kept of a frozen image.
ImageBits bitsOf(const ImageView& view, const PixelBox& seen, i32 step);
void allocatePixels(ImageBits& bits, i32 width, i32 height, i32 bitsPerPixel);

// The size of an image that is made smaller for its place, so that its pixels are about those of the device; a side
// that is not made smaller stays.
void reducedSize(const ImageView& view, const Matrix& unitToDevice, i32& width, i32& height) noexcept;

// Made smaller to that size: each pixel is the average of the area that it shows, weighted by alpha. 32 bits; seen is
// what the seen part has all of, empty when that is nothing. All but every `step`th pixel is left out first. Throws
// std::bad_alloc.
ImageBits reduced(const ImageView& view, const PixelBox& seen, i32 width, i32 height, bool hasAlpha, i32 step = 1);
// The same, row by row: take(y, colors) for those of `whole`, which is what the seen part has all of; false when that
// is nothing. What `take` throws comes out.
using TakeRow = std::function<void(i32 y, const Color* colors)>;
bool reduceRows(const ImageView& view, const PixelBox& seen, i32 width, i32 height, bool hasAlpha, i32 step,
                PixelBox& whole, const TakeRow& take);
// The whole image, or what was kept of a frozen one.
ImageBits reducedOf(const ImageView& view, const PixelBox& seen, i32 width, i32 height, i32 step);

// The seen ones alone, without copying them; `part` is where they are, which may be a few more at the left.
ImageBits cutToSeen(const ImageBits& bits, PixelBox& part);

// The same in 32 bits, in memory of its own.
ImageBits toArgb(const ImageBits& bits);
Color colorAt(const ImageBits& bits, i32 x, i32 y) noexcept;

// Turned and flipped; 32 bits.
ImageBits turned(const ImageBits& bits, ImageTurn turn);
Matrix turnMatrix(ImageTurn turn) noexcept;  // from the unit square of the image to that of the turned one

// Sides along the axes, but for rounding errors: then a turn onto an upright box is the same.
bool isAlongAxes(const Matrix& unitToDevice) noexcept;
ImageTurn turnOf(const Matrix& unitToDevice) noexcept;
Matrix onWholePixels(const Matrix& unitToDevice) noexcept;  // of what is along the axes, its box rounded
Matrix uprightBox(const Matrix& unitToDevice) noexcept;     // from the turned image's unit square
constexpr bool swapsSides(ImageTurn turn) noexcept { return static_cast<u32>(turn) & 1; }

// The image as `unitToDevice` places it, sampled at the middles of the pixels of a box around it, limited to `area`;
// 32 bits, transparent where it is not. `left` and `top` are where the box begins. A box along the axes is rounded to
// whole pixels.
ImageBits transformed(const ImageBits& bits, const Matrix& unitToDevice, const PixelBox& area, bool smooth, i32& left,
                      i32& top);

}  // namespace corvix
