// Pixels of 32 bits as the smooth contexts have them: 0xAARRGGBB, each component multiplied by alpha.
#pragma once

#include "graphics/Color.h"
#include "graphics/Geometry.h"

#include <algorithm>
#include <cstddef>

namespace corvix::smooth {

using Pixel = u32;

// a * b / 255, rounded.
constexpr u32 times(u32 a, u32 b) noexcept {
  const u32 product = a * b + 128;
  return (product + (product >> 8)) >> 8;
}

constexpr Pixel scaled(Pixel pixel, u32 by) noexcept {
  const auto half = [by](u32 pair) {
    const u32 product = pair * by + 0x800080;
    return ((product + (product >> 8 & 0xFF00FF)) >> 8) & 0xFF00FF;
  };
  return half(pixel & 0xFF00FF) | half(pixel >> 8 & 0xFF00FF) << 8;
}

constexpr Pixel over(Pixel below, Pixel pixel) noexcept { return pixel + scaled(below, 255 - (pixel >> 24)); }

constexpr Pixel toPixel(Color color) noexcept {
  const u32 alpha = alphaOf(color);
  return alpha == 255 ? color : scaled(color | kBlack, alpha);
}

constexpr Color toColor(Pixel pixel) noexcept {
  const u32 alpha = pixel >> 24;
  if (alpha == 255 || alpha == 0) return alpha ? pixel : 0;
  const auto part = [alpha](u32 level) { return std::min((level * 255 + alpha / 2) / alpha, 255u); };
  return argb(alpha, part(pixel >> 16 & 255), part(pixel >> 8 & 255), part(pixel & 255));
}

constexpr bool isEmpty(const PixelBox& box) noexcept { return box.left >= box.right || box.top >= box.bottom; }
constexpr PixelBox intersected(const PixelBox& a, const PixelBox& b) noexcept {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}
constexpr PixelBox united(const PixelBox& a, const PixelBox& b) noexcept {
  if (isEmpty(a)) return b;
  return isEmpty(b) ? a
                    : PixelBox{std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
                               std::max(a.bottom, b.bottom)};
}
constexpr PixelBox moved(const PixelBox& box, i32 x, i32 y) noexcept {
  return {box.left + x, box.top + y, box.right + x, box.bottom + y};
}

// Pixels in memory of somebody's, and which of the device's they are.
struct Surface {
  Pixel* pixels = nullptr;
  std::ptrdiff_t stride = 0;  // pixels from row to row
  PixelBox box = {0, 0, 0, 0};
  bool isOpaque = true;  // then nothing is said by the pixels' alpha

  Pixel* at(i32 x, i32 y) const noexcept { return pixels + stride * (y - box.top) + (x - box.left); }
};

}  // namespace corvix::smooth
