// Single pixels and runs of them. Where the context owns the bitmap, in its memory; else through the system.
#include "graphics/contexts/DrawingContext_p.h"

namespace corvix {

namespace {

struct Place {
  int x;
  int y;
};

bool isInside(HRGN clip, int x, int y) noexcept { return !clip || PtInRegion(clip, x, y); }

u8* at(const PixelMemory& memory, int x, int y) noexcept {
  return memory.pixels + static_cast<std::ptrdiff_t>(memory.strideBytes) * y + memory.bytesPerPixel * x;
}

void put(const PixelMemory& memory, int x, int y, Color color) noexcept {
  u8* const pixel = at(memory, x, y);
  if (memory.bytesPerPixel == 4) pixel[3] = 255;
  pixel[0] = static_cast<u8>(blueOf(color));
  pixel[1] = static_cast<u8>(greenOf(color));
  pixel[2] = static_cast<u8>(redOf(color));
}

// Where in device pixels, if that is in the output.
bool locate(i64 x, i64 y, Point origin, double width, double height, Place& place) noexcept {
  const double deviceX = std::floor(static_cast<double>(x) + origin.x + 0.5);
  const double deviceY = std::floor(static_cast<double>(y) + origin.y + 0.5);
  if (!(deviceX >= 0 && deviceX < width && deviceY >= 0 && deviceY < height)) return false;
  place = {static_cast<int>(deviceX), static_cast<int>(deviceY)};
  return true;
}

}  // namespace

bool DrawingContext::setPixel(i32 x, i32 y, Color color) {
  Place place;
  if (!canDraw() || !locate(x, y, origin_, width_, height_, place)) return false;
  const PixelMemory memory = beginPixels();
  if (!isInside(deviceClip(), place.x, place.y)) return false;
  if (memory.pixels) {
    put(memory, place.x, place.y, color);
    return true;
  }
  const POINT at = local(place.x, place.y);
  return SetPixelV(device_, at.x, at.y, gdi::colorRef(color)) != 0;
}

bool DrawingContext::setPixelAt(double x, double y, Color color) {
  const Point p = transform_.apply({x, y});
  int pixelX;
  int pixelY;
  if (isSingular_) return canDraw() && isFinite(p);
  return gdi::roundPixel(p.x, pixelX) && gdi::roundPixel(p.y, pixelY) && setPixel(pixelX, pixelY, color);
}

bool DrawingContext::getPixel(i32 x, i32 y, Color* color) {
  Place place;
  if (!color || !canDraw() || !locate(x, y, origin_, width_, height_, place)) return false;
  if (const PixelMemory memory = beginPixels(); memory.pixels) {
    const u8* const pixel = at(memory, place.x, place.y);
    *color = rgb(pixel[2], pixel[1], pixel[0]);
    return true;
  }
  const POINT at = local(place.x, place.y);
  const COLORREF found = GetPixel(device_, at.x, at.y);
  if (found == CLR_INVALID) return false;
  *color = gdi::fromColorRef(found);
  return true;
}

bool DrawingContext::readPixel(double x, double y, Color* color) {
  const Point p = transform_.apply({x, y});
  int pixelX;
  int pixelY;
  return gdi::roundPixel(p.x, pixelX) && gdi::roundPixel(p.y, pixelY) && getPixel(pixelX, pixelY, color);
}

bool DrawingContext::dottedRow(i32 first, i32 end, i32 y, Color color1, Color color2) {
  return dottedRun(first, end, y, true, color1, color2);
}

bool DrawingContext::dottedColumn(i32 x, i32 first, i32 end, Color color1, Color color2) {
  return dottedRun(first, end, x, false, color1, color2);
}

bool DrawingContext::dottedRun(i64 first, i64 end, i64 across, bool isRow, Color color1, Color color2) {
  if (!canDraw()) return false;
  // What is outside the output sets nothing, however long it is.
  const double along = std::floor((isRow ? origin_.x : origin_.y) + 0.5);
  const double length = std::ceil(isRow ? width_ : height_);
  const i64 from = std::max(first, static_cast<i64>(-along));
  const i64 to = std::min(end, static_cast<i64>(length - along));
  Place place;
  if (from >= to || !(isRow ? locate(from, across, origin_, width_, height_, place)
                            : locate(across, from, origin_, width_, height_, place))) {
    return true;
  }
  const PixelMemory memory = beginPixels();
  const HRGN clip = deviceClip();
  const Color colors[2] = {color1, color2};
  const std::size_t parity = static_cast<std::size_t>(from - first) & 1;
  const auto count = static_cast<std::size_t>(to - from);
  const int stepX = isRow ? 1 : 0;
  const int stepY = isRow ? 0 : 1;
  if (memory.pixels) {
    for (std::size_t i = 0; i < count; ++i, place.x += stepX, place.y += stepY) {
      if (isInside(clip, place.x, place.y)) put(memory, place.x, place.y, colors[(parity + i) & 1]);
    }
    return true;
  }
  const COLORREF refs[2] = {gdi::colorRef(color1), gdi::colorRef(color2)};
  POINT at = local(place.x, place.y);
  for (std::size_t i = 0; i < count; ++i, place.x += stepX, place.y += stepY, at.x += stepX, at.y += stepY) {
    if (isInside(clip, place.x, place.y)) SetPixelV(device_, at.x, at.y, refs[(parity + i) & 1]);
  }
  return true;
}

}  // namespace corvix
