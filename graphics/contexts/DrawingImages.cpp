// Images: every form of drawing one comes down to `imageOut`, after the user's settings had their say.
#include "graphics/contexts/DrawingContext_p.h"

#include "core/baselib/objects/Ref.h"
#include "graphics/quality/Quality_p.h"

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

// The nearest number of quarter turns clockwise, onto the same box; what is mirrored stays so.
ImageTurn nearestTurn(const Matrix& unit) noexcept {
  const bool isMirrored = unit.determinant() < 0;
  const double across = isMirrored ? -unit.a : unit.a;
  const double quarters = std::atan2(unit.b, across) / (std::acos(-1.0) / 2);
  const auto turn = (static_cast<u32>(std::lround(quarters)) & 3) + (isMirrored ? 4 : 0);
  return static_cast<ImageTurn>(turn);
}

// The palette that makes an image a stencil of one colour.
struct Stencil {
  Color colors[256];

  // False for images that are none.
  bool make(ImageView& view, Color color) noexcept {
    if (view.bitsPerPixel != 1 && view.model != ColorModel::Gray) return false;
    const u32 most = view.bitsPerPixel == 1 ? 1 : 255;
    for (u32 i = 0; i <= most; ++i) colors[i] = (color & ~kBlack) | (alphaOf(color) * i + most / 2) / most << 24;
    view.model = ColorModel::Indexed;
    view.palette = colors;
    view.paletteSize = static_cast<i32>(most) + 1;
    view.ink = color;
    return true;
  }
};

// The clip is asked for, and the rest left out, from this many pixels on.
constexpr i64 kLargeImage = 1 << 16;

}  // namespace

PixelBox DrawingContext::outputArea() const noexcept {
  return {static_cast<i32>(std::floor(-origin_.x)), static_cast<i32>(std::floor(-origin_.y)),
          static_cast<i32>(std::ceil(std::min(width_, gdi::kGreatest) - origin_.x)),
          static_cast<i32>(std::ceil(std::min(height_, gdi::kGreatest) - origin_.y))};
}

PixelBox DrawingContext::seenArea() {
  PixelBox area = outputArea();
  Box clip;
  if (clipBounds(&clip)) {
    area = {std::max(area.left, static_cast<i32>(std::floor(clip.left))),
            std::max(area.top, static_cast<i32>(std::floor(clip.top))),
            std::min(area.right, static_cast<i32>(std::ceil(clip.right))),
            std::min(area.bottom, static_cast<i32>(std::ceil(clip.bottom)))};
  }
  return area;
}

// With as many pixels around as go into one at the border.
bool DrawingContext::seenPart(const ImageView& view, const Matrix& unitToDevice, PixelBox& seen) {
  seen = wholeOf(view);
  if (i64{view.width} * view.height < kLargeImage) return true;
  const PixelBox area = seenArea();
  if (area.left >= area.right || area.top >= area.bottom) return false;
  const Matrix back = unitToDevice.inverse().then(Matrix::scaling(view.width, view.height));
  const Matrix areaToImage = Matrix{static_cast<double>(area.right) - area.left,
                                    0,
                                    0,
                                    static_cast<double>(area.bottom) - area.top,
                                    static_cast<double>(area.left),
                                    static_cast<double>(area.top)}
                                 .then(back);
  const Box box = boxAround(areaToImage);
  const double aroundX = 3 * std::max(1.0, std::abs(back.a) + std::abs(back.c)) + 2;
  const double aroundY = 3 * std::max(1.0, std::abs(back.b) + std::abs(back.d)) + 2;
  const auto within = [](double value, i32 most) { return static_cast<i32>(std::clamp(value, 0.0, double{1} * most)); };
  seen = {within(std::floor(box.left - aroundX), view.width), within(std::floor(box.top - aroundY), view.height),
          within(std::ceil(box.right + aroundX), view.width), within(std::ceil(box.bottom + aroundY), view.height)};
  return seen.left < seen.right && seen.top < seen.bottom;
}

bool DrawingContext::ownPlace(const Matrix& placed, i32 width, i32 height, OwnPlace& place) {
  const PixelMemory memory = pixelMemory();
  const double left = placed.e + origin_.x;
  const double top = placed.f + origin_.y;
  if (!memory.pixels || memory.bytesPerPixel != 3 || drawsEachPixel() || placed.a != width || placed.d != height ||
      placed.b != 0 || placed.c != 0 || !gdi::isWhole(placed.e) || !gdi::isWhole(placed.f) || !gdi::isWhole(left) ||
      !gdi::isWhole(top)) {
    return false;
  }
  beginGdi();
  const RECT output = {0, 0, memory.width, memory.height};
  RECT box;
  RECT clip = output;
  if (!gdi::roundRect(left, top, left + width, top + height, box)) return false;
  if (deviceClip() && GetRgnBox(deviceClip(), &clip) > SIMPLEREGION) return false;
  RECT area;
  if (!IntersectRect(&area, &box, &output) || !IntersectRect(&area, &area, &clip))
    area = {box.left, box.top, box.left, box.top};
  GdiFlush();
  place.part = {area.left - box.left, area.top - box.top, area.right - box.left, area.bottom - box.top};
  place.pixels = memory.pixels + static_cast<std::ptrdiff_t>(memory.strideBytes) * area.top + 3 * area.left;
  place.strideBytes = memory.strideBytes;
  return true;
}

bool DrawingContext::copyOut(const ImageView& view, const Matrix& placed, const PixelBox& seen) {
  const bool isCopy = view.model == ColorModel::Rgb || view.model == ColorModel::Cmyk;
  OwnPlace place;
  if (!isCopy || i64{view.width} * view.height < kLargeImage || !ownPlace(placed, view.width, view.height, place)) {
    return false;
  }
  const bool isConverted = view.finished && view.model == ColorModel::Cmyk;
  const ImageBits bits = isConverted ? bitsOf(view, seen, 1) : ImageBits();
  const ImageView from = isConverted ? viewOf(bits) : view;
  for (i32 y = place.part.top; y < place.part.bottom; ++y) {
    readRgb(from, place.part.left, y, place.part.right - place.part.left, place.row(y));
  }
  return true;
}

bool DrawingContext::reduceOut(const ImageView& view, const Matrix& placed, const PixelBox& seen, i32 width, i32 height,
                               i32 step) {
  OwnPlace place;
  if (view.finished || hasAlpha(view) || i64{width} * height < kLargeImage || !ownPlace(placed, width, height, place)) {
    return false;
  }
  const PixelBox& part = place.part;
  PixelBox whole;
  reduceRows(view, seen, width, height, false, step, whole, [&](i32 y, const Color* colors) {
    const i32 left = std::max(part.left, whole.left);
    const i32 right = std::min(part.right, whole.right);
    if (y < part.top || y >= part.bottom || left >= right) return;
    u8* to = place.row(y) + 3 * (left - part.left);
    const Color* const last = colors + (right - whole.left) - 1;
    for (colors += left - whole.left; colors != last; ++colors, to += 3)
      std::memcpy(to, colors, 4);  // the next replaces alpha
    std::memcpy(to, last, 3);
  });
  return true;
}

bool DrawingContext::placeImage(const ImageView& view, const Matrix& unitToDevice, ImageTurn turn,
                                const Recolor& recolor) {
  const Box box = boxAround(unitToDevice);
  if (!unitToDevice.isFinite() || !(box.right - box.left <= gdi::kGreatest && box.bottom - box.top <= gdi::kGreatest) ||
      !(std::abs(box.left) <= gdi::kGreatest && std::abs(box.top) <= gdi::kGreatest)) {
    return false;
  }
  if (!unitToDevice.canTurnBack()) return true;  // nothing is left of it
  bool smooth = quality().stretchMode() != StretchMode::Fast;
  Matrix placed = unitToDevice;
  const Matrix upright = unitOnto(box.left, box.top, box.right - box.left, box.bottom - box.top);
  const RotationMode mode = quality().rotationMode();
  if (turn != ImageTurn::None || isRotated(unitToDevice)) {
    if (mode == RotationMode::DoNotShow) return true;
    if (mode == RotationMode::DoNotRotate) turn = ImageTurn::None;
  }
  if (isRotated(unitToDevice)) {
    if (mode == RotationMode::QuarterTurns) turn = nearestTurn(unitToDevice);
    if (mode == RotationMode::QuarterTurns || mode == RotationMode::DoNotRotate) placed = upright;
    if (mode == RotationMode::Normal) smooth = false;
  }
  return withinMemory([&] {
    const Matrix whole = turnMatrix(turn).then(placed);
    PixelBox seen;
    if (!seenPart(view, whole, seen) || (turn == ImageTurn::None && !recolor && copyOut(view, placed, seen)))
      return true;
    i32 width;
    i32 height;
    reducedSize(view, whole, width, height);
    const bool isAlong = isAlongAxes(whole);
    const bool isReduced = smooth && !drawsEachPixel() && (width < view.width || height < view.height) &&
                           (!isAlong || onWholePixels(whole).canTurnBack());
    const i32 step = stepFor(seen, quality().largestImage(), std::min(view.width / width, view.height / height));
    if (isReduced && isAlong && !recolor && reduceOut(view, onWholePixels(whole), seen, width, height, step))
      return true;
    ImageBits bits;
    if (!isReduced || recolor) bits = bitsOf(view, seen, step);
    if (recolor) {
      bits = toArgb(bits);
      bits.recolor(recolor);
    }
    if (isReduced) {
      bits = recolor ? reduced(viewOf(bits), bits.seen, width, height, bits.hasAlpha)
                     : reducedOf(view, seen, width, height, step);
      if (!bits.pixels) return true;
      if (isAlong) return imageOut(bits, onWholePixels(whole), smooth);
    }
    return turn == ImageTurn::None ? imageOut(bits, placed, smooth) : turnedOut(bits, turn, placed, smooth);
  });
}

bool DrawingContext::drawImagePart(IAGImage* image, const PixelBox& part, double x, double y, double width,
                                   double height) {
  ImageView view;
  return canDraw() && viewOf(image, view) && cutTo(part, view) &&
         (isSingular_ || placeImage(view, unitOnto(x, y, width, height).then(transform_)));
}

bool DrawingContext::drawImage(IAGImage* image, double x, double y, double width, double height) {
  return drawImageTransformed(image, unitOnto(x, y, width, height));
}

bool DrawingContext::drawImageTransformed(IAGImage* image, const Matrix& unitToUser) {
  ImageView view;
  return canDraw() && viewOf(image, view) && (isSingular_ || placeImage(view, unitToUser.then(transform_)));
}

bool DrawingContext::drawImagePixel(IAGImage* image, i32 x, i32 y) {
  ImageView view;
  return canDraw() && viewOf(image, view) && placeImage(view, unitOnto(x, y, view.width, view.height));
}

bool DrawingContext::drawImageTurned(IAGImage* image, i32 x, i32 y, i32 width, i32 height, ImageTurn turn) {
  ImageView view;
  return canDraw() && viewOf(image, view) &&
         placeImage(view, unitOnto(x, y, width, height), static_cast<ImageTurn>(static_cast<u32>(turn) & 7));
}

bool DrawingContext::drawImageMask(IAGImage* image, i32 x, i32 y, i32 width, i32 height) {
  ImageView view;
  Stencil stencil;
  return canDraw() && viewOf(image, view) && view.bitsPerPixel == 1 && stencil.make(view, fillColor_) &&
         placeImage(view, unitOnto(x, y, width, height));
}

bool DrawingContext::drawMaskTransformed(IAGImage* mask, const Matrix& unitToUser) {
  ImageView view;
  Stencil stencil;
  return canDraw() && viewOf(mask, view) && stencil.make(view, fillColor_) &&
         (isSingular_ || placeImage(view, unitToUser.then(transform_)));
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
  ImageView view;
  RECT box;
  // With a negative size the image lies on the other side of its corner, turned over.
  if (!canDraw() || !viewOf(image, view) ||
      !gdi::roundRect(x, y, static_cast<double>(x) + width, static_cast<double>(y) + height, box) ||
      IsRectEmpty(&box)) {
    return false;
  }
  const PixelBox area = seenArea();
  const i32 left = std::max<i32>(box.left, area.left);
  const i32 top = std::max<i32>(box.top, area.top);
  const i32 seenWidth = std::min<i32>(box.right, area.right) - left;
  const i32 seenHeight = std::min<i32>(box.bottom, area.bottom) - top;
  if (seenWidth <= 0 || seenHeight <= 0) return true;
  beginGdi();
  const gdi::MemoryDevice memory(CreateCompatibleDC(device_));
  const gdi::PixelBitmap pixels = gdi::createPixels(seenWidth, seenHeight, 24);
  int deviceX;
  int deviceY;
  if (!memory || !pixels.bitmap || !gdi::roundPixel(left + origin_.x, deviceX) ||
      !gdi::roundPixel(top + origin_.y, deviceY)) {
    return false;
  }
  const gdi::Selected selected = gdi::select(memory.get(), pixels.bitmap.get());
  const POINT from = local(deviceX, deviceY);
  // Where the image is transparent, what the context shows now is to be seen.
  if (!selected || !BitBlt(memory.get(), 0, 0, seenWidth, seenHeight, device_, from.x, from.y, SRCCOPY)) return false;
  const Ref<IAGDC> offscreen = Ref<IAGDC>::adopt(createDetached());
  if (!offscreen || !offscreen->attach(memory.get(), seenWidth, seenHeight)) return false;
  offscreen->setInterpolation(interpolation());
  offscreen->setOrigin(static_cast<double>(x) - left, static_cast<double>(y) - top);
  const bool isDrawn = offscreen->drawImage(image, 0, 0, width, height);
  offscreen->detach();
  return isDrawn && blitOut(memory.get(), left, top, seenWidth, seenHeight);
}

bool DrawingContext::drawImageThroughMemory(IAGImage* image, i32 x, i32 y) {
  return image && drawImageOffscreen(image, x, y, image->width(), image->height());
}

}  // namespace corvix
