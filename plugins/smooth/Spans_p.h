// The loops over runs of pixels. A processor with SSE2 has its own, which write the same bytes.
#pragma once

#include "plugins/smooth/Pixels_p.h"

namespace corvix::smooth {

struct SpanLoops {
  void (*fill)(Pixel* to, i32 count, Pixel pixel) noexcept;
  void (*overOne)(Pixel* to, i32 count, Pixel pixel) noexcept;                           // one pixel over all
  void (*overOneCovered)(Pixel* to, const u8* covers, i32 count, Pixel pixel) noexcept;  // by as much as is covered
  void (*overMany)(Pixel* to, const Pixel* from, i32 count) noexcept;                    // pixel over pixel
  void (*overManyCovered)(Pixel* to, const Pixel* from, const u8* covers, i32 count) noexcept;
  void (*overColors)(Pixel* to, const Color* from, i32 count) noexcept;  // not multiplied by their alpha
  void (*multiply)(u8* covers, const u8* by, i32 count) noexcept;
  void (*multiplyOne)(u8* covers, u32 by, i32 count) noexcept;
};

extern const SpanLoops kScalarSpans;
extern const SpanLoops kSse2Spans;

const SpanLoops& spans() noexcept;  // the best that this processor has

}  // namespace corvix::smooth
