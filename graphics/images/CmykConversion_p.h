// CMYK to RGB, in five ways that the user chooses from. Each colour of the screen comes from one ink and black: red
// from cyan, green from magenta, blue from yellow. Paper, black and the six full colours (an ink or two of them, no
// black) are the same in every way: 0 or 255.
//
// With ink a and black k from 0 to 1, the level from 0 to 1 is
//   Fast       1 - min(1, a + k)
//   Normal     (1 - a) * (1 - k)
//   Best       the sRGB curve of (1 - g(a)) * (1 - g(k)), the light that a halftone leaves; g(a) = a + 0.8 a (1 - a),
//              the dots that grow in print
//   Alternate  1 - max(a, k)
//   By Table   (1 - t(a)) * (1 - t(k)), t by straight lines through kInkTable
#pragma once

#include "graphics/quality/Quality_p.h"

#include <array>
#include <cstddef>

namespace corvix {

// t at every 15th of 255 steps of ink, in 255ths: dots grow most in the middle.
inline constexpr u8 kInkTable[18] = {0, 18, 36, 54, 71, 88, 104, 120, 135, 149, 163, 176, 189, 201, 214, 228, 241, 255};

// What an ink leaves of 255 through the table.
inline constexpr std::array<u8, 256> kByTable = [] {
  std::array<u8, 256> left{};
  for (u32 i = 0; i < 256; ++i) {
    const u32 place = i / 15;
    const u32 rest = i % 15;
    const u32 next = kInkTable[place < 17 ? place + 1 : 17];
    left[i] = static_cast<u8>(255 - (kInkTable[place] * (15 - rest) + next * rest + 7) / 15);
  }
  return left;
}();

// Best in whole numbers that registers look up sixteen at a time. Above its dark end the sRGB curve is a power, and
// that of a product is the product of powers: every ink has a tone, (1 - g) to the power of 1/2.4 in 23752nds, and the
// product of two by 2^15 is 64ths of a level before what the curve takes away. The tone goes by what the ink leaves,
// 255 less the ink: straight in each sixteenth, but for the lowest one, where the curve is steepest.
namespace halftone {

struct Piece {
  u8 step;   // for each that is left, from 0 on
  u8 first;  // times kUnit
};
inline constexpr u8 kUnit = 24;
inline constexpr Piece kPieces[16] = {{0, 0},    {117, 98}, {99, 121}, {92, 135}, {87, 148}, {84, 158},
                                      {81, 170}, {79, 180}, {78, 185}, {75, 203}, {75, 203}, {73, 218},
                                      {73, 218}, {72, 227}, {71, 236}, {70, 246}};
inline constexpr u8 kLowest[16] = {0,   51,  68,  81,  92,  101, 110, 118,
                                   126, 133, 139, 146, 152, 158, 164, 170};  // times kUnit
inline constexpr i32 kLift = 898 - 32;  // what the curve takes away, 0.055 * 255, less half a level for rounding
// The least that a level is, by 128ths of products: below the dark end the curve is straight in light.
inline constexpr u8 kDark[16] = {0, 0, 0, 1, 1, 2, 2, 3, 4, 6, 7, 9, 10};

}  // namespace halftone

// From `pixels` times cyan, magenta, yellow, black to as many times blue, green, red. Neither may overlap. [any thread]
void cmykToRgb(const u8* cmyk, std::size_t pixels, CmykMode mode, u8* bgr) noexcept;

}  // namespace corvix
