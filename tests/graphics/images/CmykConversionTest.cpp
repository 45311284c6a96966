// Every way from CMYK to RGB against its formula.
#include "graphics/Color.h"
#include "graphics/images/CmykConversion_p.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace corvix {
namespace {

constexpr CmykMode kModes[] = {CmykMode::Fast, CmykMode::Normal, CmykMode::Best, CmykMode::Alternate,
                               CmykMode::ByTable};

Color convert(u8 c, u8 m, u8 y, u8 k, CmykMode mode) {
  const u8 cmyk[4] = {c, m, y, k};
  u8 bgr[3];
  cmykToRgb(cmyk, 1, mode, bgr);
  return rgb(bgr[2], bgr[1], bgr[0]);
}

TEST(Cmyk, CornersAreExactInEveryMode) {
  for (const CmykMode mode : kModes) {
    for (u32 corner = 0; corner < 16; ++corner) {
      const auto ink = [corner](u32 bit) { return static_cast<u8>(corner >> bit & 1 ? 255 : 0); };
      const auto level = [&](u32 bit) { return ink(bit) || ink(3) ? 0u : 255u; };
      EXPECT_EQ(convert(ink(0), ink(1), ink(2), ink(3), mode), rgb(level(0), level(1), level(2)))
          << static_cast<int>(mode) << ' ' << corner;
    }
  }
}

TEST(Cmyk, EveryLevelFollowsItsFormula) {
  const auto tableInk = [](double ink) {
    const auto place = static_cast<std::size_t>(ink / 15);
    if (place >= 17) return 1.0;
    const double rest = ink / 15 - static_cast<double>(place);
    return (kInkTable[place] * (1 - rest) + kInkTable[place + 1] * rest) / 255;
  };
  const auto grown = [](double a) { return a + 0.8 * a * (1 - a); };
  const auto screen = [](double light) {
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  };
  for (int ink = 0; ink < 256; ++ink) {
    for (int black = 0; black < 256; black += 5) {
      const double a = ink / 255.0;
      const double k = black / 255.0;
      const double expected[] = {1 - std::min(1.0, a + k), (1 - a) * (1 - k), screen((1 - grown(a)) * (1 - grown(k))),
                                 1 - std::max(a, k), (1 - tableInk(ink)) * (1 - tableInk(black))};
      const double slack[] = {0.01, 0.51, 2.0, 0.01, 1.5};
      for (int i = 0; i < 5; ++i) {
        const auto level = redOf(convert(static_cast<u8>(ink), 0, 0, static_cast<u8>(black), kModes[i]));
        // Near black a step of light is many steps of the screen.
        if (i == 2 && expected[i] < 0.1) continue;
        ASSERT_NEAR(level, 255 * expected[i], slack[i]) << "mode " << i + 1 << ", " << ink << ", " << black;
      }
    }
  }
}

}  // namespace
}  // namespace corvix
