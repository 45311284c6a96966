// Images: every form of drawing one comes down to `imageOut`, after the user's settings had their say.
#include "graphics/contexts/DrawingContext_p.h"

#include "core/baselib/objects/Ref.h"
#include "graphics/quality/Quality.h"

#include <cstring>

namespace corvix {

namespace {

Matrix unitOnto(double x, double y, double width, double height) noexcept { return {width, 0, 0, height, x, y}; }

Box boxAround(const Matrix& unit) noexcept {
  Box box = {unit.e, unit.f, unit.e, unit.f};
  for (const Point corner : {unit.apply({1, 0}), unit.apply({0, 1}), unit.apply({1, 1})}) {
    box = {std::min(box.left, corner.x), std::min(box.top, corner.y), std::max(box.right, corner.x),
           std::max(box.bottom, corner.y)};
  }
  return box;
}

// How far a matrix is from one that only scales, in parts of what it scales to.
bool isRotated(const Matrix& unit) noexcept {
  return std::abs(unit.b) + std::abs(unit.c) > 1e-6 * (std::abs(unit.a) + std::abs(unit.d));
}

// The nearest number of quarter turns clockwise, onto the same box.
ImageTurn nearestTurn(const Matrix& unit) noexcept {
  const double quarters = std::atan2(unit.b, unit.a) / (std::acos(-1.0) / 2);
  const auto turn = (static_cast<i32>(std::lround(quarters)) + 4) & 3;
  return static_cast<ImageTurn>(turn);
}

// The bits of a part of an image. Throws std::bad_alloc.
bool cutOut(ImageBits& bits, const PixelBox& part) {
  if (part.left < 0 || part.top < 0 || part.right > bits.width || part.bottom > bits.height ||
      part.left >= part.right || part.top >= part.bottom) {
    return false;
  }
  if (i64{part.left} * bits.bitsPerPixel % 8) bits = toArgb(bits);
  bits.pixels = bits.row(part.top) + i64{part.left} * bits.bitsPerPixel / 8;
  bits.width = part.right - part.left;
  bits.height = part.bottom - part.top;
  return true;
}

}  // namespace

PixelBox DrawingContext::outputArea() const noexcept {
  return {static_cast<i32>(std::floor(-origin_.x)), static_cast<i32>(std::floor(-origin_.y)),
          static_cast<i32>(std::ceil(std::min(width_, gdi::kGreatest) - origin_.x)),
          static_cast<i32>(std::ceil(std::min(height_, gdi::kGreatest) - origin_.y))};
}

bool DrawingContext::placeImage(const ImageBits& bits, const Matrix& unitToDevice) {
  const Box box = boxAround(unitToDevice);
  if (!unitToDevice.isFinite() || !(box.right - box.left <= gdi::kGreatest && box.bottom - box.top <= gdi::kGreatest) ||
      !(std::abs(box.left) <= gdi::kGreatest && std::abs(box.top) <= gdi::kGreatest)) {
    return false;
  }
  const bool smooth = quality().stretchMode() != StretchMode::Fast;
  const Matrix upright = unitOnto(box.left, box.top, box.right - box.left, box.bottom - box.top);
  if (unitToDevice.determinant() == 0) return true;  // nothing is left of it
  if (!isRotated(unitToDevice)) return imageOut(bits, unitToDevice, smooth);
  switch (quality().rotationMode()) {
    case RotationMode::DoNotShow:
      return true;
    case RotationMode::DoNotRotate:
      return imageOut(bits, upright, smooth);
    case RotationMode::QuarterTurns:
      return withinMemory([&] { return imageOut(turned(bits, nearestTurn(unitToDevice)), upright, smooth); });
    case RotationMode::Normal:
      return imageOut(bits, unitToDevice, false);
    case RotationMode::Best:
      return imageOut(bits, unitToDevice, smooth);
  }
  return false;
}

bool DrawingContext::drawImagePart(IAGImage* image, const PixelBox& part, double x, double y, double width,
                                   double height) {
  if (!canDraw()) return false;
  return withinMemory([&] {
    ImageBits bits;
    // A part is counted in the image's own pixels, none of which may be left out then.
    return makeBits(image, INT64_MAX, bits) && cutOut(bits, part) &&
           placeImage(bits, unitOnto(x, y, width, height).then(transform_));
  });
}

bool DrawingContext::drawImage(IAGImage* image, double x, double y, double width, double height) {
  return drawImageTransformed(image, unitOnto(x, y, width, height));
}

bool DrawingContext::drawImageTransformed(IAGImage* image, const Matrix& unitToUser) {
  if (!canDraw()) return false;
  return withinMemory([&] {
    ImageBits bits;
    return makeBits(image, quality().largestImage(), bits) && placeImage(bits, unitToUser.then(transform_));
  });
}

bool DrawingContext::drawImagePixel(IAGImage* image, i32 x, i32 y) {
  if (!canDraw()) return false;
  return withinMemory([&] {
    ImageBits bits;
    return makeBits(image, quality().largestImage(), bits) &&
           placeImage(bits, unitOnto(x, y, image->width(), image->height()));
  });
}

bool DrawingContext::drawImageTurned(IAGImage* image, i32 x, i32 y, i32 width, i32 height, ImageTurn turn) {
  if (!canDraw()) return false;
  const RotationMode mode = quality().rotationMode();
  if (turn != ImageTurn::None && mode == RotationMode::DoNotShow) return true;
  return withinMemory([&] {
    ImageBits bits;
    if (!makeBits(image, quality().largestImage(), bits)) return false;
    if (turn != ImageTurn::None && mode != RotationMode::DoNotRotate) bits = turned(bits, turn);
    return placeImage(bits, unitOnto(x, y, width, height));
  });
}

bool DrawingContext::drawImageMask(IAGImage* image, i32 x, i32 y, i32 width, i32 height) {
  if (!canDraw() || !image || image->bitsPerPixel() != 1) return false;
  return withinMemory([&] {
    ImageView view;
    if (!viewOf(image, view)) return false;
    const Color colors[2] = {0, fillColor_};
    view.palette = colors;
    view.paletteSize = 2;
    return placeImage(toArgb(view), unitOnto(x, y, width, height));
  });
}

bool DrawingContext::blitOut(HDC source, i32 x, i32 y, i32 width, i32 height) {
  beginGdi();
  int left;
  int top;
  if (!gdi::roundPixel(x + origin_.x, left) || !gdi::roundPixel(y + origin_.y, top)) return false;
  const gdi::ClipScope scope(device_, clipBesideDevice(), baseOrigin_);
  const POINT at = local(left, top);
  return BitBlt(device_, at.x, at.y, width, height, source, 0, 0, SRCCOPY) != 0;
}

bool DrawingContext::drawImageOffscreen(IAGImage* image, i32 x, i32 y, i32 width, i32 height) {
  if (!canDraw() || width <= 0 || height <= 0) return false;
  beginGdi();
  const gdi::MemoryDevice memory(CreateCompatibleDC(device_));
  const gdi::PixelBitmap pixels = gdi::createPixels(width, height, 24);
  int left;
  int top;
  if (!memory || !pixels.bitmap || !gdi::roundPixel(x + origin_.x, left) || !gdi::roundPixel(y + origin_.y, top)) {
    return false;
  }
  const gdi::Selected selected = gdi::select(memory.get(), pixels.bitmap.get());
  const POINT from = local(left, top);
  // What shines through the image is what was there.
  if (!selected || !BitBlt(memory.get(), 0, 0, width, height, device_, from.x, from.y, SRCCOPY)) return false;
  const Ref<IAGDC> offscreen = Ref<IAGDC>::adopt(createDetached());
  if (!offscreen || !offscreen->attach(memory.get(), width, height)) return false;
  offscreen->setInterpolation(interpolation());
  const bool isDrawn = offscreen->drawImage(image, 0, 0, width, height);
  offscreen->detach();
  return isDrawn && blitOut(memory.get(), x, y, width, height);
}

bool DrawingContext::drawImageThroughMemory(IAGImage* image, i32 x, i32 y) {
  return image && drawImageOffscreen(image, x, y, image->width(), image->height());
}

}  // namespace corvix
