#include "graphics/images/CmykConversion_p.h"

#include "graphics/images/WideLoops_p.h"

#include <algorithm>

namespace corvix {

namespace {

// a * b / 255, rounded; exact for a, b up to 255.
constexpr u32 product(u32 a, u32 b) noexcept {
  const u32 wide = a * b + 128;
  return (wide + (wide >> 8)) >> 8;
}

constexpr std::array<u16, 256> kTones = [] {
  std::array<u16, 256> tones{};
  for (u32 left = 0; left < 256; ++left) {
    const halftone::Piece& piece = halftone::kPieces[left / 16];
    const u32 first = left < 16 ? halftone::kLowest[left] : piece.first;
    tones[255 - left] = static_cast<u16>(piece.step * left + first * halftone::kUnit);
  }
  return tones;
}();

constexpr u8 halftoneLevel(u32 ink, u32 black) noexcept {
  const i32 product = (kTones[ink] * kTones[black] + 0x4000) >> 15;
  const i32 dark = product < 0x800 ? halftone::kDark[product >> 7] : 0;
  return static_cast<u8>(std::max((product - halftone::kLift) >> 6, dark));
}

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
    case CmykMode::Best:
      convert(cmyk, pixels, bgr, halftoneLevel);
      return;
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
