// Loops over many pixels in registers of 256 bits (AVX2), for processors that have them; 128 bits (SSE2) have no
// look-up in a register and were not fast enough. Each gives the bytes of the plain loop that does the rest.
#pragma once

#include "graphics/quality/Quality_p.h"

#include <cstddef>

namespace corvix::wide {

// These do as many of `pixels` as fill registers, from the first on, and answer how many: 0 where the processor has no
// such registers. Nothing is written behind the last of all.
std::size_t cmykToRgb(const u8* cmyk, std::size_t pixels, CmykMode mode, u8* bgr) noexcept;
std::size_t rgbToGray(const u8* bgr, std::size_t pixels, u8* gray) noexcept;

// To each sum the byte of every row; all of them, on any processor.
void addRows(const u8* const (&rows)[4], std::size_t count, u16* sums) noexcept;

}  // namespace corvix::wide
