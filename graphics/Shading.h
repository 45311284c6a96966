// IAGShading: what fills and strokes besides one colour. A context that has it answers true to `supportsShading`; find
// it by query<IAGShading>(context). A paint stays until the next one or `setFillColor` or `setStrokeColor`; it is
// placed by the user transform of that moment, and moves with the origin. False, with the paint as it was, for numbers
// that are not finite, too many stops, or a matrix that cannot be turned back. [the context's thread]
#pragma once

#include "graphics/Geometry.h"
#include "graphics/Image.h"

namespace corvix {

enum class PaintUse : i32 { Fill, Stroke };

// From 0 to 1, in ascending order; two of one offset make an edge.
struct ColorStop {
  double offset;
  Color color;
};

constexpr u32 kExtendStart = 1, kExtendEnd = 2;  // else nothing is painted beyond that end

class IAGShading : public IBTransportable {
  CORVIX_IDENTITY(IAGShading, 0x91C4E6F8, 0x4E05B37A, 0x8D63A21F, 0xC7D05B94, IBTransportable)

 public:
  static constexpr i32 kMostStops = 4096;

  // Colours along a line from `from` to `to`; of no length, it paints nothing.
  virtual bool setAxialPaint(PaintUse use, const Point& from, const Point& to, const ColorStop* stops, i32 count,
                             u32 extend) = 0;

  // Colours from one circle to another, which lie over each other as far as both are there.
  virtual bool setRadialPaint(PaintUse use, const Point& fromCenter, double fromRadius, const Point& toCenter,
                              double toRadius, const ColorStop* stops, i32 count, u32 extend) = 0;

  // The image, placed where the matrix puts the unit square, and repeated over the plane. It is read at once.
  virtual bool setTilePaint(PaintUse use, IAGImage* tile, const Matrix& unitToUser) = 0;

  // All that the clip leaves, in the fill paint.
  virtual bool paintAll() = 0;
};

}  // namespace corvix
