// Text: masks of glyphs are images of the fill colour, outlines are filled as paths are.
#include "graphics/IAGDCCreator.h"
#include "graphics/contexts/DrawingContext_p.h"

#include <cstring>
#include <utility>

namespace corvix {

template <class Add>
void DrawingContext::ShapeSink::add(Point to, Add add) noexcept {
  isWhole_ = isWhole_ && withinMemory([&] {
               add();
               return true;
             });
  current_ = to;
}

void DrawingContext::ShapeSink::moveTo(Point to) {
  add(to, [&] {
    if (path_.isOpen()) path_.close();
    path_.moveTo(to);
  });
}

void DrawingContext::ShapeSink::lineTo(Point to) {
  add(to, [&] { path_.lineTo(current_, to); });
}

void DrawingContext::ShapeSink::curveTo(Point control1, Point control2, Point to) {
  add(to, [&] { path_.curveTo(current_, control1, control2, to); });
}

bool DrawingContext::ShapeSink::take(Path& path) noexcept {
  if (path_.isOpen()) add(current_, [&] { path_.close(); });
  path = std::exchange(path_, Path());
  return std::exchange(isWhole_, true);
}

Box DrawingContext::visibleArea() const noexcept {
  return {-origin_.x, -origin_.y, width_ - origin_.x, height_ - origin_.y};
}

namespace {

// As much of a colour as the mask says, on rows of blue, green and red.
void paintMask(const u8* mask, i32 count, Color color, u8* to) noexcept {
  const u32 parts[3] = {blueOf(color), greenOf(color), redOf(color)};
  const u32 alpha = alphaOf(color);
  i32 x = 0;
  while (x < count) {
    u32 four;
    if (x + 4 <= count && (std::memcpy(&four, mask + x, 4), four == 0)) {
      x += 4;
      continue;
    }
    if (const u32 level = mask[x]) {
      const u32 share = alpha == 255 ? level : (level * alpha + 127) / 255;
      for (int i = 0; i < 3; ++i) {
        const u32 wide = parts[i] * share + to[3 * x + i] * (255 - share) + 128;
        to[3 * x + i] = static_cast<u8>((wide + (wide >> 8)) >> 8);
      }
    }
    ++x;
  }
}

}  // namespace

bool DrawingContext::paintCoverage(const u8* coverage, i32 strideBytes, const PixelBox& place) {
  const i32 width = place.right - place.left;
  const i32 height = place.bottom - place.top;
  if (!canDraw() || !coverage || width <= 0 || height <= 0) return false;
  if (isSingular_) return true;
  const Color fill =
      capabilities() & capability::kGdiPlus ? fillColor_ : fillColor_ | kBlack;  // as outlines are filled
  const Matrix placed = {
      static_cast<double>(width),    0, 0, static_cast<double>(height), static_cast<double>(place.left),
      static_cast<double>(place.top)};
  OwnPlace own;
  if (ownPlace(placed, width, height, own)) {
    for (i32 y = own.part.top; y < own.part.bottom; ++y) {
      paintMask(coverage + static_cast<std::ptrdiff_t>(strideBytes) * y + own.part.left, own.part.right - own.part.left,
                fill, own.row(y));
    }
    return true;
  }
  return withinMemory([&] {
    ImageBits bits;
    bits.width = width;
    bits.height = height;
    bits.bitsPerPixel = 32;
    bits.strideBytes = width * 4;
    bits.hasAlpha = true;
    bits.seen = {0, 0, width, height};
    bits.converted.allocate(static_cast<std::size_t>(width) * static_cast<u32>(height) * 4);
    bits.pixels = bits.converted.data();
    const u32 alpha = alphaOf(fill);
    const Color color = fill & 0x00FFFFFF;
    auto* to = reinterpret_cast<Color*>(bits.converted.data());
    for (i32 y = 0; y < height; ++y) {
      const u8* const row = coverage + static_cast<std::ptrdiff_t>(strideBytes) * y;
      for (i32 x = 0; x < width; ++x) *to++ = color | (row[x] * alpha + 127) / 255 << 24;
    }
    return imageOut(bits, placed, false);
  });
}

bool DrawingContext::useShape(bool (DrawingContext::*use)(const Path&)) {
  Path path;
  const bool isWhole = shape_.take(path);
  if (!canDraw() || !isWhole) return false;
  const FillRule rule = std::exchange(fillRule_, FillRule::Winding);
  const bool isDone = withinMemory([&] { return (this->*use)(path); });
  fillRule_ = rule;
  return isDone;
}

bool DrawingContext::fillShape() { return useShape(&DrawingContext::fillFitted); }

bool DrawingContext::clipShape() { return useShape(&DrawingContext::clipTo); }

}  // namespace corvix
