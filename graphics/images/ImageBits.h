// ImageBits: an image's pixels in a form that GDI and GDI+ take: 1, 4 or 8 bits with a palette, 24 or 32 bits. Those of
// the image itself where they can be used, else converted.
#pragma once

#include "core/baselib/memory/HeapAllocated.h"
#include "graphics/AGDC.h"

#include <vector>

namespace corvix {

struct ImageBits {
  i32 width = 0;
  i32 height = 0;
  i32 bitsPerPixel = 0;
  i32 strideBytes = 0;
  const u8* pixels = nullptr;
  bool hasAlpha = false;       // 32 bits only
  std::vector<Color> palette;  // for up to 8 bits: as many as the pixels can name
  std::vector<u8, HeapAllocator<u8>> converted;

  const u8* row(i32 y) const noexcept { return pixels + static_cast<std::ptrdiff_t>(strideBytes) * y; }
};

// What an image holds, through its interface. Null rows for an image that has none.
struct ImageView {
  i32 width;
  i32 height;
  ColorModel model;
  i32 bitsPerPixel;
  i32 strideBytes;
  const u8* rows;
  const Color* palette;
  i32 paletteSize;
};
bool viewOf(IAGImage* image, ImageView& view) noexcept;

// `count` pixels of a row from `x` on, every `step`th, as colours.
void readColors(const ImageView& view, i32 x, i32 y, i32 step, i32 count, Color* colors) noexcept;

// False for an image without pixels. A larger image than `mostPixels` is made smaller by leaving out pixels. Throws
// std::bad_alloc.
bool makeBits(IAGImage* image, i64 mostPixels, ImageBits& bits);

// The same in 32 bits, in memory of its own.
ImageBits toArgb(const ImageBits& bits);
ImageBits toArgb(const ImageView& view);
Color colorAt(const ImageBits& bits, i32 x, i32 y) noexcept;

// Turned and flipped; 32 bits.
ImageBits turned(const ImageBits& bits, ImageTurn turn);

// The image as `unitToDevice` places it, sampled at the middles of the pixels of a box around it, limited to `area`;
// 32 bits, transparent where it is not. `left` and `top` are where the box begins.
ImageBits transformed(const ImageBits& bits, const Matrix& unitToDevice, const PixelBox& area, bool smooth, i32& left,
                      i32& top);

}  // namespace corvix
