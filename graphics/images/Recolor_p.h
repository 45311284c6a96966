// What changes an image's colours on its way to the device.
#pragma once

#include "graphics/images/ImageBits_p.h"

#include <algorithm>

namespace corvix {

inline u32 clampLevel(float level) noexcept { return static_cast<u32>(std::clamp(level, 0.0F, 1.0F) * 255 + 0.5F); }

// 5 by 5, row by row: (red, green, blue, alpha, 1) from 0 to 1 times the matrix, which must outlive it.
inline Recolor recolorBy(const float* matrix) {
  return [matrix](Color color) {
    const auto part = [](u32 level) { return static_cast<float>(level) / 255; };
    const float in[5] = {part(redOf(color)), part(greenOf(color)), part(blueOf(color)), part(alphaOf(color)), 1};
    u32 out[4];
    for (int column = 0; column < 4; ++column) {
      float sum = 0;
      for (int row = 0; row < 5; ++row) sum += in[row] * matrix[5 * row + column];
      out[column] = clampLevel(sum);
    }
    return argb(out[3], out[0], out[1], out[2]);
  };
}

// The changes must outlive it.
inline Recolor recolorBy(const ColorChange* changes, i32 count) {
  return [changes, count](Color color) {
    const ColorChange* const end = changes + count;
    const auto* const found = std::find_if(changes, end, [color](const ColorChange& c) { return c.from == color; });
    return found == end ? color : found->to;
  };
}

}  // namespace corvix
