#include "graphics/images/CmykConversion_p.h"

#include "graphics/images/WideLoops_p.h"

#include <algorithm>
#include <cmath>

namespace corvix {

namespace {

// a * b / 255, rounded; exact for a, b up to 255.
constexpr u32 product(u32 a, u32 b) noexcept {
  const u32 wide = a * b + 128;
  return (wide + (wide >> 8)) >> 8;
}

double srgb(double light) noexcept {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

// The sRGB curve of a product is not a product of curves: the level of every ink with every black, by the light that
// they leave in 4095ths.
struct Halftone {
  static constexpr u32 kFull = 4095;
  std::array<u8, 0x10000> levels;

  Halftone() noexcept {
    std::array<u32, 256> light;
    for (u32 i = 0; i < 256; ++i) {
      const double ink = i / 255.0;
      light[i] = static_cast<u32>(std::lround(kFull * (1 - (ink + 0.8 * ink * (1 - ink)))));
    }
    std::array<u8, kFull + 1> screen;
    for (u32 i = 0; i <= kFull; ++i)
      screen[i] = static_cast<u8>(std::lround(255 * srgb(static_cast<double>(i) / kFull)));
    for (u32 i = 0; i < levels.size(); ++i) levels[i] = screen[(light[i >> 8] * light[i & 255] + kFull / 2) / kFull];
  }

  u8 mix(u32 ink, u32 black) const noexcept { return levels[black << 8 | ink]; }
};

template <class Mix>
void convert(const u8* cmyk, std::size_t pixels, u8* bgr, Mix mix) noexcept {
  for (; pixels; --pixels, cmyk += 4, bgr += 3) {
    const u32 black = cmyk[3];
    bgr[0] = mix(u32{cmyk[2]}, black);
    bgr[1] = mix(u32{cmyk[1]}, black);
    bgr[2] = mix(u32{cmyk[0]}, black);
  }
}

}  // namespace

void cmykToRgb(const u8* cmyk, std::size_t pixels, CmykMode mode, u8* bgr) noexcept {
  const std::size_t done = wide::cmykToRgb(cmyk, pixels, mode, bgr);
  cmyk += 4 * done;
  bgr += 3 * done;
  pixels -= done;
  switch (mode) {
    case CmykMode::Fast:
      convert(cmyk, pixels, bgr, [](u32 ink, u32 black) {
        const u32 sum = ink + black;
        return static_cast<u8>(255 - (sum < 255 ? sum : 255));
      });
      return;
    case CmykMode::Normal:
      convert(cmyk, pixels, bgr, [](u32 ink, u32 black) { return static_cast<u8>(product(255 - ink, 255 - black)); });
      return;
    case CmykMode::Best: {
      static const Halftone halftone;
      convert(cmyk, pixels, bgr, [](u32 ink, u32 black) { return halftone.mix(ink, black); });
      return;
    }
    case CmykMode::Alternate:
      convert(cmyk, pixels, bgr, [](u32 ink, u32 black) { return static_cast<u8>(255 - std::max(ink, black)); });
      return;
    case CmykMode::ByTable:
      convert(cmyk, pixels, bgr,
              [](u32 ink, u32 black) { return static_cast<u8>(product(kByTable[ink], kByTable[black])); });
      return;
  }
}

}  // namespace corvix
