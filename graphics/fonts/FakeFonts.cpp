#include "graphics/fonts/FakeFonts_p.h"

#include "graphics/fonts/FontNames_p.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace corvix {

namespace {

constexpr double kNarrowest = 0.25;
constexpr double kWidest = 4;

class StretchingSink final : public IGlyphSink {
 public:
  StretchingSink(IGlyphSink& sink, double stretch) noexcept : sink_(sink), stretch_(stretch) {}
  void moveTo(Point to) override { sink_.moveTo(stretched(to)); }
  void lineTo(Point to) override { sink_.lineTo(stretched(to)); }
  void curveTo(Point control1, Point control2, Point to) override {
    sink_.curveTo(stretched(control1), stretched(control2), stretched(to));
  }

 private:
  Point stretched(Point p) const noexcept { return {p.x * stretch_, p.y}; }

  IGlyphSink& sink_;
  double stretch_;
};

// The columns of a bitmap, each the average of what it shows of the original.
bool stretchColumns(const GlyphCoverage& from, double stretch, GlyphCoverage& to) noexcept {
  const double left = from.left * stretch;
  const double right = (from.left + from.width) * stretch;
  to.left = static_cast<i32>(std::floor(left));
  to.top = from.top;
  to.width = static_cast<i32>(std::ceil(right)) - to.left;
  to.height = from.height;
  if (!to.rows.tryAllocate(static_cast<std::size_t>(to.width) * static_cast<u32>(to.height))) return false;
  for (i32 x = 0; x < to.width; ++x) {
    const double begin = std::max((to.left + x) / stretch - from.left, 0.0);
    const double end = std::min((to.left + x + 1) / stretch - from.left, static_cast<double>(from.width));
    for (i32 y = 0; y < to.height; ++y) {
      const u8* const row = from.rows.get() + static_cast<std::ptrdiff_t>(from.width) * y;
      double sum = 0;
      for (i32 column = static_cast<i32>(begin); column < end; ++column) {
        sum += row[column] * (std::min(end, column + 1.0) - std::max(begin, static_cast<double>(column)));
      }
      to.rows[static_cast<std::size_t>(to.width) * static_cast<u32>(y) + static_cast<u32>(x)] =
          static_cast<u8>(std::min(255.0, sum * stretch + 0.5));
    }
  }
  return true;
}

}  // namespace

StretchedFont::StretchedFont(Ref<IFMFont> font, const FontRequest& request)
    : font_(std::move(font)), source_(*corvix::query<IFMFontSource>(font_.get())) {
  const u32 count =
      request.widths && request.firstCode <= 0xFF ? std::min(request.widthCount, 0x100 - request.firstCode) : 0;
  for (u32 i = 0; i < count; ++i) {
    const u32 glyph = source_.glyphOf(codePointOf1252(request.firstCode + i));
    if (glyph && request.widths[i]) widths_.emplace(glyph, request.widths[i] / 1000.0);
  }
}

double StretchedFont::advance(u32 glyph) {
  const auto wanted = widths_.find(glyph);
  return wanted == widths_.end() ? source_.advance(glyph) : wanted->second;
}

double StretchedFont::stretchOf(u32 glyph) const {
  const auto wanted = widths_.find(glyph);
  const double own = wanted == widths_.end() ? 0 : source_.advance(glyph);
  return own > 0 ? std::clamp(wanted->second / own, kNarrowest, kWidest) : 1;
}

bool StretchedFont::outline(u32 glyph, IGlyphSink& sink) {
  StretchingSink stretching(sink, stretchOf(glyph));
  return source_.outline(glyph, stretching);
}

bool StretchedFont::coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) {
  const double stretch = stretchOf(glyph);
  GlyphCoverage own;
  if (!source_.coverage(glyph, sizePx, levels, own)) return false;
  if (stretch == 1 || own.width == 0) {
    coverage = std::move(own);
    return true;
  }
  GlyphCoverage made;
  if (!stretchColumns(own, stretch, made)) return false;
  if (levels == 2) {
    for (i32 i = 0; i < made.width * made.height; ++i) {
      u8& pixel = made.rows[static_cast<std::size_t>(i)];
      pixel = pixel >= 128 ? 255 : 0;
    }
  }
  coverage = std::move(made);
  return true;
}

namespace {

// The box, in ems: a frame with the code's digits in two rows.
constexpr double kBoxTop = -0.72;
constexpr double kBoxBottom = 0.12;
constexpr double kFrame = 0.04;
constexpr double kSide = 0.06;  // left and right of the box
constexpr double kDigitWidth = 0.18;
constexpr double kDigitHeight = 0.3;
constexpr double kDigitGap = 0.06;

// Three columns of five rows each, the top row in the highest bits.
constexpr u16 kDigits[16] = {0x7B6F, 0x2C97, 0x73E7, 0x73CF, 0x5BC9, 0x79CF, 0x79EF, 0x7249,
                             0x7BEF, 0x7BCF, 0x7BED, 0x6BAE, 0x7927, 0x6B6E, 0x79A7, 0x79A4};

i32 digitColumns(u32 codePoint) noexcept { return codePoint > 0xFFFF ? 3 : 2; }

double boxWidth(u32 codePoint) noexcept {
  return 2 * kFrame + digitColumns(codePoint) * (kDigitWidth + kDigitGap) + kDigitGap;
}

// Clockwise, or against the clock for a hole.
void addBox(IGlyphSink& sink, const Box& box, bool isHole) {
  sink.moveTo({box.left, box.top});
  sink.lineTo(isHole ? Point{box.left, box.bottom} : Point{box.right, box.top});
  sink.lineTo({box.right, box.bottom});
  sink.lineTo(isHole ? Point{box.right, box.top} : Point{box.left, box.bottom});
  sink.lineTo({box.left, box.top});
}

// Calls draw(box, whether it is a hole) for everything that is inked.
template <class Draw>
void eachPart(u32 codePoint, Draw draw) {
  const Box outer = {kSide, kBoxTop, kSide + boxWidth(codePoint), kBoxBottom};
  draw(outer, false);
  draw({outer.left + kFrame, outer.top + kFrame, outer.right - kFrame, outer.bottom - kFrame}, true);
  const i32 columns = digitColumns(codePoint);
  for (i32 place = 0; place < 2 * columns; ++place) {
    const u32 digit = codePoint >> (4 * (2 * columns - 1 - place)) & 15;
    const double left = outer.left + kFrame + kDigitGap + place % columns * (kDigitWidth + kDigitGap);
    const i32 line = place / columns;
    const double top = outer.top + kFrame + kDigitGap + line * (kDigitHeight + kDigitGap);
    for (i32 y = 0; y < 5; ++y) {
      for (i32 x = 0; x < 3; ++x) {
        if (!(kDigits[digit] >> (14 - 3 * y - x) & 1)) continue;
        const auto at = [&](i32 column, i32 row) {
          return Point{left + column * kDigitWidth / 3, top + row * kDigitHeight / 5};
        };
        draw({at(x, y).x, at(x, y).y, at(x + 1, y + 1).x, at(x + 1, y + 1).y}, false);
      }
    }
  }
}

}  // namespace

FontMetrics BoxFont::metrics() { return {-kBoxTop, kBoxBottom, 0, false}; }

double BoxFont::advance(u32 glyph) { return boxWidth(glyph) + 2 * kSide; }

bool BoxFont::outline(u32 glyph, IGlyphSink& sink) {
  if (glyph > 0x10FFFF) return false;
  eachPart(glyph, [&](const Box& box, bool isHole) { addBox(sink, box, isHole); });
  return true;
}

// Boxes cover pixels by their areas, which is exact for them.
bool BoxFont::coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) {
  if (glyph > 0x10FFFF || !(sizePx > 0 && sizePx <= kMostSizePx)) return false;
  if (levels != 2 && levels != 17 && levels != 65) return false;
  GlyphCoverage made;
  made.left = static_cast<i32>(std::floor(kSide * sizePx));
  made.top = static_cast<i32>(std::floor(kBoxTop * sizePx));
  made.width = static_cast<i32>(std::ceil((kSide + boxWidth(glyph)) * sizePx)) - made.left;
  made.height = static_cast<i32>(std::ceil(kBoxBottom * sizePx)) - made.top;
  const std::size_t count = static_cast<std::size_t>(made.width) * static_cast<u32>(made.height);
  HeapBuffer<float> sums;
  if (!made.rows.tryAllocate(count) || !sums.tryAllocate(count)) return false;
  std::fill_n(sums.get(), count, 0.0F);
  eachPart(glyph, [&](const Box& box, bool isHole) {
    const Box pixels = {box.left * sizePx - made.left, box.top * sizePx - made.top, box.right * sizePx - made.left,
                        box.bottom * sizePx - made.top};
    const auto share = [](i32 pixel, double from, double to) {
      return std::max(0.0, std::min(pixel + 1.0, to) - std::max(static_cast<double>(pixel), from));
    };
    for (i32 y = std::max(static_cast<i32>(pixels.top), 0); y < std::min(pixels.bottom, made.height * 1.0); ++y) {
      for (i32 x = std::max(static_cast<i32>(pixels.left), 0); x < std::min(pixels.right, made.width * 1.0); ++x) {
        const double area = share(x, pixels.left, pixels.right) * share(y, pixels.top, pixels.bottom);
        sums[static_cast<std::size_t>(y) * static_cast<u32>(made.width) + static_cast<u32>(x)] +=
            static_cast<float>(isHole ? -area : area);
      }
    }
  });
  const float steps = static_cast<float>(levels - 1);
  for (std::size_t i = 0; i < count; ++i) {
    made.rows[i] = static_cast<u8>(std::lround(std::round(std::clamp(sums[i], 0.0F, 1.0F) * steps) / steps * 255));
  }
  coverage = std::move(made);
  return true;
}

}  // namespace corvix
