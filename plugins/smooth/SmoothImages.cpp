// Images of a smooth context. The user's settings had their say, and what is made smaller was averaged to about its
// size: see DrawingContext::placeImage.
#include "graphics/images/Recolor_p.h"
#include "graphics/quality/Quality_p.h"
#include "plugins/smooth/SmoothContext_p.h"
#include "shell/Plugin.h"

namespace corvix::smooth {

namespace {

void readPixels(const ImageBits& bits, i32 x, i32 y, i32 count, Pixel* to) noexcept {
  const u8* const row = bits.row(y);
  if (bits.bitsPerPixel == 32) {
    const auto* const from = reinterpret_cast<const Color*>(row) + x;
    for (i32 i = 0; i < count; ++i) to[i] = bits.hasAlpha ? toPixel(from[i]) : from[i] | kBlack;
  } else if (bits.bitsPerPixel == 24) {
    const u8* from = row + 3 * static_cast<std::ptrdiff_t>(x);
    for (i32 i = 0; i < count; ++i, from += 3) to[i] = rgb(from[2], from[1], from[0]);
  } else {
    for (i32 i = 0; i < count; ++i) to[i] = toPixel(colorAt(bits, x + i, y));
  }
}

// 24 bits, or 32 with alpha.
void copyRow(const ImageBits& bits, i32 x, i32 y, Pixel* to, i32 count) noexcept {
  if (bits.bitsPerPixel == 24) return readPixels(bits, x, y, count, to);
  spans().overColors(to, reinterpret_cast<const Color*>(bits.row(y)) + x, count);
}

// An image's pixels as they are.
class StraightPaint final : public PaintSource {
 public:
  StraightPaint(const ImageBits& bits, i32 left, i32 top) noexcept : bits_(bits), left_(left), top_(top) {}
  void read(Point at, i32 count, Pixel* to) const noexcept override {
    readPixels(bits_, static_cast<i32>(at.x) - left_, static_cast<i32>(at.y) - top_, count, to);
  }

 private:
  const ImageBits& bits_;
  i32 left_;
  i32 top_;
};

HeapVector<Pixel> pixelsOf(const ImageBits& bits) {
  const PixelBox& seen = bits.seen;
  const auto width = static_cast<std::size_t>(seen.right - seen.left);
  HeapVector<Pixel> pixels(width * static_cast<std::size_t>(seen.bottom - seen.top));
  for (i32 y = seen.top; y < seen.bottom; ++y) {
    readPixels(bits, seen.left, y, static_cast<i32>(width), &pixels[static_cast<std::size_t>(y - seen.top) * width]);
  }
  return pixels;
}

}  // namespace

// The library's own: what is kept of frozen images goes by numbers that it gives.
IAGImage* SmoothContext::createImage(i32 width, i32 height, ColorModel model, i32 bitsPerPixel) {
  const IShell* const shell = IShell::getInstance();
  const auto creator =
      shell ? createObject<IAGDCCreator>(*shell->pluginManager(), L"AGDC.Screen") : Ref<IAGDCCreator>();
  const auto maker = Ref<IAGDC>::adopt(creator ? creator->create(0, 0, nullptr, 0, 0) : nullptr);
  return maker ? maker->createImage(width, height, model, bitsPerPixel) : nullptr;
}

Filter SmoothContext::filter(bool smooth) const noexcept {
  if (!smooth) return Filter::Nearest;
  if (quality().stretchMode() == StretchMode::Best) return Filter::Cubic;
  return interpolation_ == 0                             ? Filter::Nearest
         : interpolation_ == 64 || interpolation_ == 192 ? Filter::Linear
                                                         : Filter::Cubic;
}

bool SmoothContext::imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) {
  if (!prepare()) return false;
  Painter::How how = this->how(kBlack, nullptr);
  if (isEmpty(how.clip) || isEmpty(bits.seen)) return true;
  Matrix place = unitToDevice.then(Matrix::translation(origin_.x, origin_.y));
  const bool isAlong = isAlongAxes(place);
  if (isAlong) place = onWholePixels(place);
  if (!place.canTurnBack()) return true;
  how.origin = {0, 0};
  const Matrix upright = isAlong ? uprightBox(place) : Matrix();
  const PixelBox box = {static_cast<i32>(upright.e), static_cast<i32>(upright.f),
                        static_cast<i32>(upright.e + upright.a), static_cast<i32>(upright.f + upright.d)};
  if (isAlong && turnOf(place) == ImageTurn::None && place.a == bits.width && place.d == bits.height) {
    const PixelBox seen = intersected(how.clip, intersected(box, moved(bits.seen, box.left, box.top)));
    const bool isPlain =
        !how.masks[0].mask && !how.masks[1].mask && how.opacity == 255 && how.mode == BlendMode::Normal;
    if (isPlain && !isEmpty(seen) && (bits.bitsPerPixel == 24 || (bits.bitsPerPixel == 32 && bits.hasAlpha))) {
      drawTiles();
      for (i32 y = seen.top; y < seen.bottom; ++y)
        copyRow(bits, seen.left - box.left, y - box.top, how.surface.at(seen.left, y), seen.right - seen.left);
      changed(seen);
      return true;
    }
    const StraightPaint paint(bits, box.left, box.top);
    how.source = lent(paint);
    return paintBox(how, seen);
  }
  const std::ptrdiff_t stride = bits.seen.right - bits.seen.left;
  how.source = std::allocate_shared<SampledPaint>(
      HeapAllocator<SampledPaint>(), pixelsOf(bits), SampledPaint::Picture{nullptr, stride, bits.seen},
      place.inverse().then(Matrix::scaling(bits.width, bits.height)), filter(smooth), false);
  if (isAlong) return paintBox(how, box);
  figures_.clear();
  figures_.moveTo(place.apply({0, 0}));
  for (const Point corner : {Point{1, 0}, Point{1, 1}, Point{0, 1}}) figures_.lineTo(place.apply(corner));
  return paintFigures(how, FillRule::Winding);
}

bool SmoothContext::turnedOut(const ImageBits& bits, ImageTurn turn, const Matrix& unitToDevice, bool smooth) {
  return imageOut(bits, turnMatrix(turn).then(unitToDevice), smooth);
}

// Into memory it goes anyway.
bool SmoothContext::drawImageOffscreen(IAGImage* image, i32 x, i32 y, i32 width, i32 height) {
  return width != 0 && height != 0 && drawRecolored(image, x, y, width, height, {});
}

bool SmoothContext::drawRecolored(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const Recolor& recolor) {
  ImageView view;
  return canDraw() && viewOf(image, view) &&
         placeImage(view, {double{1} * width, 0, 0, double{1} * height, double{1} * x, double{1} * y}, ImageTurn::None,
                    recolor);
}

bool SmoothContext::drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) {
  return matrix && drawRecolored(image, x, y, width, height, recolorBy(matrix));
}

bool SmoothContext::drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                                      i32 count) {
  return changes && count > 0 && drawRecolored(image, x, y, width, height, recolorBy(changes, count));
}

bool SmoothContext::setTilePaint(PaintUse use, IAGImage* tile, const Matrix& unitToUser) {
  ImageView view;
  const Matrix place = unitToUser.then(transform_);
  if (!viewOf(tile, view) || !place.isFinite() || !place.canTurnBack()) return false;
  return withinMemory([&] {
    i32 width;
    i32 height;
    reducedSize(view, {std::hypot(place.a, place.b), 0, 0, std::hypot(place.c, place.d), 0, 0}, width, height);
    const bool isSmaller = width < view.width || height < view.height;
    const ImageBits bits =
        isSmaller ? reduced(view, wholeOf(view), width, height, hasAlpha(view)) : makeBits(view, wholeOf(view));
    const Matrix back = place.inverse().then(Matrix::scaling(bits.width, bits.height));
    // Pixel for pixel nothing is between them.
    const bool isStraight = back.a == 1 && back.d == 1 && back.b == 0 && back.c == 0 && back.e == std::floor(back.e) &&
                            back.f == std::floor(back.f);
    return setPaint(use,
                    std::allocate_shared<SampledPaint>(
                        HeapAllocator<SampledPaint>(), pixelsOf(bits),
                        SampledPaint::Picture{nullptr, bits.seen.right - bits.seen.left, bits.seen}, back,
                        isStraight ? Filter::Nearest : filter(quality().stretchMode() != StretchMode::Fast), true));
  });
}

}  // namespace corvix::smooth
