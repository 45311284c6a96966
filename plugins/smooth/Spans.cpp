#include "plugins/smooth/Spans_p.h"

namespace corvix::smooth {

namespace {

void fill(Pixel* to, i32 count, Pixel pixel) noexcept { std::fill_n(to, count, pixel); }

void overOne(Pixel* to, i32 count, Pixel pixel) noexcept {
  for (i32 i = 0; i < count; ++i) to[i] = over(to[i], pixel);
}

void overOneCovered(Pixel* to, const u8* covers, i32 count, Pixel pixel) noexcept {
  for (i32 i = 0; i < count; ++i) to[i] = over(to[i], scaled(pixel, covers[i]));
}

void overMany(Pixel* to, const Pixel* from, i32 count) noexcept {
  for (i32 i = 0; i < count; ++i) to[i] = over(to[i], from[i]);
}

void overManyCovered(Pixel* to, const Pixel* from, const u8* covers, i32 count) noexcept {
  for (i32 i = 0; i < count; ++i) to[i] = over(to[i], scaled(from[i], covers[i]));
}

void overColors(Pixel* to, const Color* from, i32 count) noexcept {
  for (i32 i = 0; i < count; ++i) {
    const u32 alpha = alphaOf(from[i]);
    if (alpha) to[i] = alpha == 255 ? from[i] : over(to[i], toPixel(from[i]));
  }
}

void multiply(u8* covers, const u8* by, i32 count) noexcept {
  for (i32 i = 0; i < count; ++i) covers[i] = static_cast<u8>(times(covers[i], by[i]));
}

void multiplyOne(u8* covers, u32 by, i32 count) noexcept {
  for (i32 i = 0; i < count; ++i) covers[i] = static_cast<u8>(times(covers[i], by));
}

}  // namespace

const SpanLoops kScalarSpans = {fill,       overOne,  overOneCovered, overMany, overManyCovered,
                                overColors, multiply, multiplyOne};

const SpanLoops& spans() noexcept {
  static const SpanLoops& best = __builtin_cpu_supports("sse2") ? kSse2Spans : kScalarSpans;
  return best;
}

}  // namespace corvix::smooth
