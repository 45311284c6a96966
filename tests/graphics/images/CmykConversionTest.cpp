// Every way from CMYK to RGB against its formula, and the loops of many pixels against one alone.
#include "graphics/Color.h"
#include "graphics/images/CmykConversion_p.h"
#include "graphics/images/ImageBits_p.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

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
    for (int black = 0; black < 256; ++black) {
      const double a = ink / 255.0;
      const double k = black / 255.0;
      const double expected[] = {1 - std::min(1.0, a + k), (1 - a) * (1 - k), screen((1 - grown(a)) * (1 - grown(k))),
                                 1 - std::max(a, k), (1 - tableInk(ink)) * (1 - tableInk(black))};
      const double slack[] = {0.01, 0.51, 1.1, 0.01, 1.5};
      for (int i = 0; i < 5; ++i) {
        const auto level = redOf(convert(static_cast<u8>(ink), 0, 0, static_cast<u8>(black), kModes[i]));
        ASSERT_NEAR(level, 255 * expected[i], slack[i]) << "mode " << i + 1 << ", " << ink << ", " << black;
      }
    }
  }
}

// Many at once go through other loops than one alone: every ink with every black, at every length and place in a
// register.
TEST(Cmyk, ManyAtOnceAreWhatEachIsAlone) {
  std::vector<u8> cmyk;
  for (u32 i = 0; i < 0x10000; ++i) {
    for (const u32 ink : {i & 255, i * 3 & 255, (i & 255) ^ 0x5A}) cmyk.push_back(static_cast<u8>(ink));
    cmyk.push_back(static_cast<u8>(i >> 8));
  }
  for (const CmykMode mode : kModes) {
    std::vector<u8> alone(3 * 0x10000 + 1);
    for (std::size_t i = 0; i < 0x10000; ++i) cmykToRgb(&cmyk[4 * i], 1, mode, &alone[3 * i]);
    std::vector<u8> many(alone.size());
    cmykToRgb(cmyk.data(), 0x10000, mode, many.data());
    EXPECT_EQ(many, alone) << static_cast<int>(mode);
    for (std::size_t count = 0; count < 80; ++count) {
      std::vector<u8> some(3 * count + 1, 0xAB);
      cmykToRgb(&cmyk[4 * 777], count, mode, some.data());
      EXPECT_TRUE(std::equal(some.begin(), some.end() - 1, &alone[3 * 777]) && some.back() == 0xAB)
          << static_cast<int>(mode) << ' ' << count;
    }
  }
}

TEST(Gray, ManyAtOnceAreWhatEachIsAlone) {
  std::vector<u8> bgr(3 * 0x10000);
  std::vector<u8> gray(0x10001, 0xAB);
  u32 wrong = 0;
  for (u32 red = 0; red < 256; ++red) {
    for (u32 i = 0; i < 0x10000; ++i) {
      bgr[3 * i] = static_cast<u8>(i);
      bgr[3 * i + 1] = static_cast<u8>(i >> 8);
      bgr[3 * i + 2] = static_cast<u8>(red);
    }
    rgbToGray(bgr.data(), 0x10000, gray.data());
    for (u32 i = 0; i < 0x10000; ++i) wrong += gray[i] != (red * 299 + (i >> 8) * 587 + (i & 255) * 114 + 500) / 1000;
  }
  EXPECT_EQ(wrong, 0u);
  EXPECT_EQ(gray.back(), 0xAB);
}

#if defined(__i386__)
// Calls with a stack of which nothing is known but that it is aligned to 4 bytes.
void callOnStack(void (*call)(), u32 shift) {
  asm volatile("movl %%esp, %%esi\n\tandl $-32, %%esp\n\tsubl %1, %%esp\n\tcall *%0\n\tmovl %%esi, %%esp"
               :
               : "r"(call), "r"(shift)
               : "esi", "eax", "ecx", "edx", "memory", "cc");
}

TEST(Cmyk, WorksOnAStackOfFourBytes) {
  static u8 cmyk[400];
  static u8 bgr[300];
  static u8 gray[100];
  for (u32 shift = 0; shift < 32; shift += 4) {
    callOnStack(
        [] {
          for (const CmykMode mode : kModes) cmykToRgb(cmyk, 100, mode, bgr);
          rgbToGray(bgr, 100, gray);
        },
        shift);
  }
  EXPECT_EQ(gray[99], 255);
}
#endif

}  // namespace
}  // namespace corvix
