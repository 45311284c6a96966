// ITextTarget: what a drawing context offers for text, found by query<ITextTarget>(context). `drawText` and its like
// (graphics/text/Text.h) draw through it; a context without it gets its text as paths. [the context's thread]
#pragma once

#include "graphics/Geometry.h"
#include "graphics/fonts/FontSource.h"

namespace corvix {

class ITextTarget : public IBTransportable {
  CORVIX_IDENTITY(ITextTarget, 0x64D1C9B8, 0x4A2F7E03, 0x9B85F06C, 0x2C73D1EA, IBTransportable)

 public:
  // User coordinates to device pixels, without the origin; device pixels here are all without it.
  virtual Matrix textTransform() const noexcept = 0;

  // What is outside need not be painted.
  virtual Box visibleArea() const noexcept = 0;

  // Paints the fill colour through a mask of bytes onto the pixels of `place`: 0 nothing, 255 all of it. The clip
  // applies.
  virtual bool paintCoverage(const u8* coverage, i32 strideBytes, const PixelBox& place) = 0;

  // Takes figures in user coordinates until one of the next two, which use them by the winding rule and forget them.
  // The path under construction and the fill rule stay as they are.
  virtual IGlyphSink& shape() = 0;
  virtual bool fillShape() = 0;
  virtual bool clipShape() = 0;
};

}  // namespace corvix
