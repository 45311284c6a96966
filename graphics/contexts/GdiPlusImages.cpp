// Images through GDI+.
#include "graphics/contexts/AGDC_p.h"
#include "graphics/images/ImageFiles_p.h"
#include "graphics/quality/Quality_p.h"

namespace corvix {

using gdiplus::flat;

namespace {

gdiplus::OwnedAttributes makeAttributes() noexcept {
  return gdiplus::makeWhole<gdiplus::OwnedAttributes>(
      [](Gdiplus::GpImageAttributes** made) { return flat().GdipCreateImageAttributes(made); });
}

// An emulation takes a mirrored quarter turn as mirrored first, so that is done in two steps.
bool turnBitmap(gdiplus::Wrapper<Gdiplus::GpBitmap>& bitmap, ImageTurn turn) noexcept {
  const auto by = [&](ImageTurn step) {
    return step == ImageTurn::None ||
           bitmap.keep(flat().GdipImageRotateFlip(bitmap.native, static_cast<Gdiplus::RotateFlipType>(step)));
  };
  const auto quarters = static_cast<ImageTurn>(static_cast<u32>(turn) & 3);
  if (turn == quarters || !swapsSides(turn)) return by(turn);
  return by(quarters) && by(ImageTurn::FlipX);
}

bool isFarLarger(const PixelBox& seen, const ImageBits& bits) noexcept {
  return i64{bits.width} * bits.height > 2 * i64{seen.right - seen.left} * (seen.bottom - seen.top);
}

constexpr double kHairPixels = 1.0 / 256;  // too little to be seen

// Turned or not, each pixel of the image onto one of the device.
bool isOneToOne(const ImageBits& bits, const Matrix& unitToDevice) noexcept {
  if (!isAlongAxes(unitToDevice)) return false;
  const Matrix box = uprightBox(unitToDevice);
  const bool isSwapped = swapsSides(turnOf(unitToDevice));
  return gdi::isWhole(box.e) && gdi::isWhole(box.f) && box.a == (isSwapped ? bits.height : bits.width) &&
         box.d == (isSwapped ? bits.width : bits.height);
}

}  // namespace

bool AGDC::imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) {
  return turnedOut(bits, ImageTurn::None, unitToDevice, smooth);
}

// By the nearest pixel the image is sampled here, so that it covers what plain GDI covers. Else GDI+ gets only what is
// seen: it converts all of a bitmap before it draws some of it.
bool AGDC::turnedOut(const ImageBits& bits, ImageTurn turn, const Matrix& unitToDevice, bool smooth) {
  const Matrix whole = turnMatrix(turn).then(unitToDevice);
  if (isAlongAxes(whole) && !isOneToOne(bits, whole) && modeOf(smooth) == Gdiplus::InterpolationModeNearestNeighbor) {
    i32 left = 0;
    i32 top = 0;
    const ImageBits sampled = transformed(bits, whole, seenArea(), false, left, top);
    const Matrix box = {sampled.width * 1.0, 0, 0, sampled.height * 1.0, left * 1.0, top * 1.0};
    return sampled.width == 0 || drawBitmap(sampled, box, smooth);
  }
  if (!isFarLarger(bits.seen, bits)) return drawBitmap(bits, whole, smooth);
  PixelBox part;
  const ImageBits cut = cutToSeen(bits, part);
  // From the part's unit square to the image's, in this order so that whole pixels stay whole.
  const auto share = [](double side, i32 pixels, i32 all) { return side * pixels / all; };
  return drawBitmap(cut,
                    {share(whole.a, cut.width, bits.width), share(whole.b, cut.width, bits.width),
                     share(whole.c, cut.height, bits.height), share(whole.d, cut.height, bits.height),
                     whole.e + share(whole.a, part.left, bits.width) + share(whole.c, part.top, bits.height),
                     whole.f + share(whole.b, part.left, bits.width) + share(whole.d, part.top, bits.height)},
                    smooth);
}

Gdiplus::InterpolationMode AGDC::modeOf(bool smooth) const noexcept {
  if (!smooth) return Gdiplus::InterpolationModeNearestNeighbor;
  return quality().stretchMode() == StretchMode::Best ? Gdiplus::InterpolationModeHighQualityBicubic : interpolation_;
}

// Along the axes an image is turned first, then drawn upright.
bool AGDC::drawBitmap(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) {
  if (!prepare()) return false;
  const bool isAlong = isAlongAxes(unitToDevice);
  const ImageTurn turn = isAlong ? turnOf(unitToDevice) : ImageTurn::None;
  const Matrix unit = isAlong ? uprightBox(unitToDevice) : unitToDevice;
  // Turned in memory of its own; GDI+ refuses to turn single bits.
  const ImageBits own = turn == ImageTurn::None ? ImageBits{} : toArgb(bits);
  const gdiplus::OwnedBitmap bitmap = bitmapOver(turn == ImageTurn::None ? bits : own);
  if (!bitmap || !turnBitmap(*bitmap.get(), turn)) return false;
  const i32 width = swapsSides(turn) ? bits.height : bits.width;
  const i32 height = swapsSides(turn) ? bits.width : bits.height;
  Gdiplus::GpImageAttributes* attributes = attributes_;
  auto& graphics = *graphics_.get();
  Gdiplus::GpBitmap* const native = bitmap.get()->native;
  if (isOneToOne(bits, unitToDevice)) {
    const auto left = static_cast<INT>(unit.e);
    const auto top = static_cast<INT>(unit.f);
    if (!attributes) return graphics.keep(flat().GdipDrawImageRectI(graphics.native, native, left, top, width, height));
    return graphics.keep(flat().GdipDrawImageRectRectI(graphics.native, native, left, top, width, height, 0, 0, width,
                                                       height, Gdiplus::UnitPixel, attributes, nullptr, nullptr));
  }
  const auto mode = modeOf(smooth);
  const bool isNearest = mode == Gdiplus::InterpolationModeNearestNeighbor;
  gdiplus::OwnedAttributes edges;
  if (mode != interpolation_) graphics.keep(flat().GdipSetInterpolationMode(graphics.native, mode));
  // Pixels are areas here, not points: none is lost at the left and the top.
  graphics.keep(flat().GdipSetPixelOffsetMode(graphics.native, Gdiplus::PixelOffsetModeHalf));
  if (!isNearest && !attributes) {
    edges = makeAttributes();  // no fading into what is beyond the edge
    if (edges) attributes = edges.get()->native;
  }
  if (!isNearest && attributes) {
    flat().GdipSetImageAttributesWrapMode(attributes, Gdiplus::WrapModeTileFlipXY, 0, FALSE);
  }
  // Along the axes a little more than the image, so that no rounding error loses a row or column at its edges.
  const double more = isAlong && !isNearest ? kHairPixels : 0;
  const auto corner = [&](double x, double y) {
    const Point at = unit.apply({x, y});
    return Gdiplus::PointF(static_cast<float>(at.x), static_cast<float>(at.y));
  };
  const Point least = more > 0 ? Point{-more / unit.a, -more / unit.d} : Point{0, 0};
  const Point most = {1 - least.x, 1 - least.y};
  const Gdiplus::PointF corners[3] = {corner(least.x, least.y), corner(most.x, least.y), corner(least.x, most.y)};
  const auto part = [](double of, i32 pixels) { return static_cast<float>(of * pixels); };
  const bool isDrawn = graphics.keep(flat().GdipDrawImagePointsRect(
      graphics.native, native, corners, 3, part(least.x, width), part(least.y, height), part(most.x - least.x, width),
      part(most.y - least.y, height), Gdiplus::UnitPixel, attributes, nullptr, nullptr));
  graphics.keep(flat().GdipSetPixelOffsetMode(graphics.native, Gdiplus::PixelOffsetModeDefault));
  if (mode != interpolation_) graphics.keep(flat().GdipSetInterpolationMode(graphics.native, interpolation_));
  return isDrawn;
}

bool AGDC::drawWith(IAGImage* image, const PixelBox& box, const gdiplus::OwnedAttributes& attributes) {
  ImageView view;
  if (!attributes || !viewOf(image, view)) return false;
  attributes_ = attributes.get()->native;
  const bool isDrawn = placeImage(view, {static_cast<double>(box.right), 0, 0, static_cast<double>(box.bottom),
                                         static_cast<double>(box.left), static_cast<double>(box.top)});
  attributes_ = nullptr;
  return isDrawn;
}

bool AGDC::drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) {
  if (!canDraw() || !matrix) return false;
  const gdiplus::OwnedAttributes attributes = makeAttributes();
  Gdiplus::ColorMatrix colors;
  std::copy(matrix, matrix + 25, &colors.m[0][0]);
  if (!attributes ||
      flat().GdipSetImageAttributesColorMatrix(attributes.get()->native, Gdiplus::ColorAdjustTypeDefault, TRUE, &colors,
                                               nullptr, Gdiplus::ColorMatrixFlagsDefault) != Gdiplus::Ok) {
    return false;
  }
  return drawWith(image, {x, y, width, height}, attributes);
}

bool AGDC::drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                             i32 count) {
  if (!canDraw() || !changes || count <= 0) return false;
  const gdiplus::OwnedAttributes attributes = makeAttributes();
  return withinMemory([&] {
    std::vector<Gdiplus::ColorMap> map(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < map.size(); ++i) {
      map[i].oldColor = Gdiplus::Color(changes[i].from);
      map[i].newColor = Gdiplus::Color(changes[i].to);
    }
    return attributes &&
           flat().GdipSetImageAttributesRemapTable(attributes.get()->native, Gdiplus::ColorAdjustTypeDefault, TRUE,
                                                   static_cast<UINT>(count), map.data()) == Gdiplus::Ok &&
           drawWith(image, {x, y, width, height}, attributes);
  });
}

}  // namespace corvix
