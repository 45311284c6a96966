#include "graphics/images/CmykConversion_p.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corvix {

namespace {

using Curve = std::array<u8, 256>;

// a * b / 255, rounded; exact for a, b up to 255.
constexpr u32 product(u32 a, u32 b) noexcept {
  const u32 wide = a * b + 128;
  return (wide + (wide >> 8)) >> 8;
}

constexpr Curve straightCurve() noexcept {
  Curve curve{};
  for (u32 i = 0; i < 256; ++i) curve[i] = static_cast<u8>(255 - i);
  return curve;
}

// What the ink leaves, through the table.
constexpr Curve tableCurve() noexcept {
  Curve curve{};
  for (u32 i = 0; i < 256; ++i) {
    const u32 place = i / 15;
    const u32 rest = i % 15;
    const u32 next = kInkTable[place < 17 ? place + 1 : 17];
    curve[i] = static_cast<u8>(255 - (kInkTable[place] * (15 - rest) + next * rest + 7) / 15);
  }
  return curve;
}

constexpr Curve kStraight = straightCurve();
constexpr Curve kByTable = tableCurve();

double srgb(double light) noexcept {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

// The sRGB curve of a product is not a product of curves: levels of light, 12 bits, and the screen's level for each.
struct Halftone {
  static constexpr u32 kFull = 4095;
  std::array<u16, 256> light;
  std::array<u8, kFull + 1> level;

  Halftone() noexcept {
    for (u32 i = 0; i < 256; ++i) {
      const double ink = i / 255.0;
      light[i] = static_cast<u16>(std::lround(kFull * (1 - (ink + 0.8 * ink * (1 - ink)))));
    }
    for (u32 i = 0; i <= kFull; ++i)
      level[i] = static_cast<u8>(std::lround(255 * srgb(double{static_cast<double>(i)} / kFull)));
  }

  u8 mix(u32 ink, u32 black) const noexcept { return level[(u32{light[ink]} * light[black] + kFull / 2) / kFull]; }
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
  switch (mode) {
    case CmykMode::Fast:
      convert(cmyk, pixels, bgr, [](u32 ink, u32 black) {
        const u32 sum = ink + black;
        return static_cast<u8>(255 - (sum < 255 ? sum : 255));
      });
      return;
    case CmykMode::Normal:
      convert(cmyk, pixels, bgr,
              [](u32 ink, u32 black) { return static_cast<u8>(product(kStraight[ink], kStraight[black])); });
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
