// IFMFontSource: what can be drawn of a font: query<IFMFontSource>(font). Lengths are in ems, so that the size
// multiplies them; x grows to the right, y downwards, (0, 0) is where the glyph stands on the baseline. Glyphs are
// numbers of the font's own, 0 is the one for what the font has not. [one thread at a time]
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/objects/Transportable.h"
#include "graphics/Geometry.h"

namespace corvix {

struct FontMetrics {
  double ascent = 0;   // above the baseline, positive
  double descent = 0;  // below it, positive
  double lineGap = 0;
  bool isFixedPitch = false;
};

// Takes an outline. Figures are filled by the winding rule and close by themselves.
class IGlyphSink {
 public:
  virtual void moveTo(Point to) = 0;
  virtual void lineTo(Point to) = 0;
  virtual void curveTo(Point control1, Point control2, Point to) = 0;

 protected:
  ~IGlyphSink() = default;
};

// How much of each pixel a glyph covers: 0 for nothing, 255 for all of it. Empty for a glyph without ink.
struct GlyphCoverage {
  i32 left = 0;  // of the first pixel, from where the glyph stands; `top` above the baseline is negative
  i32 top = 0;
  i32 width = 0;
  i32 height = 0;  // rows of `width` bytes, from the top
  HeapBuffer<u8> rows;
};

class IFMFontSource : public IBTransportable {
  CORVIX_IDENTITY(IFMFontSource, 0x8E21D5A6, 0x4C07B93F, 0xA1D86E52, 0x3F90C47B, IBTransportable)

 public:
  static constexpr i32 kMostSizePx = 512;

  virtual FontMetrics metrics() = 0;

  // 0 when the font has none for that character of Unicode.
  virtual u32 glyphOf(u32 codePoint) = 0;

  // How far the next glyph stands from this one; 0 for marks that stand on the one before.
  virtual double advance(u32 glyph) = 0;

  // False when the font has no such glyph or cannot be read; a glyph without ink is true and empty.
  virtual bool outline(u32 glyph, IGlyphSink& sink) = 0;

  // At a size in pixels above 0 and up to kMostSizePx, in 2, 17 or 65 levels. False as above, for other sizes and
  // levels, and when memory is short; `coverage` is what it was then.
  virtual bool coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) = 0;
};

}  // namespace corvix
