// Color: 0xAARRGGBB, not multiplied by its alpha; 0xFF000000 is opaque black.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

using Color = u32;

constexpr Color argb(u32 alpha, u32 red, u32 green, u32 blue) noexcept {
  return (alpha & 255) << 24 | (red & 255) << 16 | (green & 255) << 8 | (blue & 255);
}
constexpr Color rgb(u32 red, u32 green, u32 blue) noexcept { return argb(255, red, green, blue); }

constexpr u32 alphaOf(Color color) noexcept { return color >> 24; }
constexpr u32 redOf(Color color) noexcept { return color >> 16 & 255; }
constexpr u32 greenOf(Color color) noexcept { return color >> 8 & 255; }
constexpr u32 blueOf(Color color) noexcept { return color & 255; }

constexpr Color kBlack = 0xFF000000;
constexpr Color kWhite = 0xFFFFFFFF;

}  // namespace corvix
