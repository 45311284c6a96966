// Font files: whatever they say, glyphs come out within bounds or not at all.
#include "plugins/fonts-freetype/FreeTypeFace_p.h"
#include "tests/fuzz/Fuzz.h"

#include <cmath>
#include <cstring>

namespace corvix::fuzz {

namespace {

struct Points final : IGlyphSink {
  void moveTo(Point to) override { take(to); }
  void lineTo(Point to) override { take(to); }
  void curveTo(Point control1, Point control2, Point to) override {
    take(control1);
    take(control2);
    take(to);
  }
  void take(Point point) {
    require(std::isfinite(point.x) && std::isfinite(point.y), "points are numbers");
    ++count;
  }
  int count = 0;
};

void useGlyph(FreeTypeFace& face, u32 glyph) {
  require(face.advance(glyph) >= 0, "advances go forward");
  Points points;
  face.outline(glyph, points);
  require(points.count <= 3 * 0x10000, "an outline has so many points");
  for (const i32 levels : {2, 17}) {
    GlyphCoverage mask;
    if (!face.coverage(glyph, 24, levels, mask) || !mask.rows) continue;
    require(mask.width > 0 && mask.height > 0 && mask.width <= FreeTypeFace::kMostMaskBytes / mask.height,
            "a mask is as large as it may be");
  }
}

}  // namespace

void fonts(Bytes bytes) {
  HeapBuffer<u8> copy;
  if (!copy.tryAllocate(bytes.size())) return;
  std::memcpy(copy.get(), bytes.data(), bytes.size());
  const auto face = FreeTypeFace::open(std::move(copy), static_cast<u32>(bytes.size()));
  if (!face) return;
  require(std::isfinite(face->metrics().ascent) && face->metrics().descent >= 0, "lines have a height");
  for (const u32 glyph :
       {1u, face->glyphCount() - 1, face->glyphOf('A'), face->glyphOfCode(65), face->glyphOfName("secret")}) {
    useGlyph(*face, glyph);
  }
}

}  // namespace corvix::fuzz
