// Images through GDI+.
#include "graphics/contexts/GdiPlusContext_p.h"
#include "graphics/images/ImageFiles.h"
#include "graphics/quality/Quality.h"

namespace corvix {

using gdiplus::flat;

namespace {

gdiplus::OwnedAttributes makeAttributes() noexcept {
  return gdiplus::makeWhole<gdiplus::OwnedAttributes>(
      [](Gdiplus::GpImageAttributes** made) { return flat().GdipCreateImageAttributes(made); });
}

bool isWhole(double value) noexcept { return std::abs(value) < 1e9 && value == std::floor(value); }

}  // namespace

bool AGDC::drawBitmap(const ImageBits& bits, const Matrix& unit, Gdiplus::GpImageAttributes* attributes, bool smooth) {
  if (!prepare()) return false;
  const gdiplus::OwnedBitmap bitmap = bitmapOver(bits);
  if (!bitmap) return false;
  auto& graphics = *graphics_.get();
  Gdiplus::GpBitmap* const native = bitmap.get()->native;
  const bool isUpright = unit.b == 0 && unit.c == 0 && isWhole(unit.a) && isWhole(unit.d) && isWhole(unit.e) &&
                         isWhole(unit.f) && unit.a > 0 && unit.d > 0;
  const bool isScaled = !isUpright || unit.a != bits.width || unit.d != bits.height;
  auto mode = interpolation_;
  if (!smooth) mode = Gdiplus::InterpolationModeNearestNeighbor;
  if (smooth && quality().stretchMode() == StretchMode::Best) mode = Gdiplus::InterpolationModeHighQualityBicubic;
  const bool isNearest = mode == Gdiplus::InterpolationModeNearestNeighbor;
  gdiplus::OwnedAttributes edges;
  if (isScaled) {
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
  }
  const auto whole = [](double value) { return static_cast<INT>(value); };
  bool isDrawn = false;
  if (isUpright && !attributes) {
    isDrawn = graphics.keep(
        flat().GdipDrawImageRectI(graphics.native, native, whole(unit.e), whole(unit.f), whole(unit.a), whole(unit.d)));
  } else if (isUpright) {
    isDrawn = graphics.keep(flat().GdipDrawImageRectRectI(graphics.native, native, whole(unit.e), whole(unit.f),
                                                          whole(unit.a), whole(unit.d), 0, 0, bits.width, bits.height,
                                                          Gdiplus::UnitPixel, attributes, nullptr, nullptr));
  } else {
    const auto corner = [&](Point p) {
      const Point at = unit.apply(p);
      return Gdiplus::PointF(static_cast<float>(at.x), static_cast<float>(at.y));
    };
    const Gdiplus::PointF corners[3] = {corner({0, 0}), corner({1, 0}), corner({0, 1})};
    isDrawn = graphics.keep(flat().GdipDrawImagePointsRect(
        graphics.native, native, corners, 3, 0, 0, static_cast<float>(bits.width), static_cast<float>(bits.height),
        Gdiplus::UnitPixel, attributes, nullptr, nullptr));
  }
  if (isScaled) {
    graphics.keep(flat().GdipSetPixelOffsetMode(graphics.native, Gdiplus::PixelOffsetModeDefault));
    if (mode != interpolation_) graphics.keep(flat().GdipSetInterpolationMode(graphics.native, interpolation_));
  }
  return isDrawn;
}

bool AGDC::imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) {
  return drawBitmap(bits, unitToDevice, nullptr, smooth);
}

bool AGDC::drawWith(IAGImage* image, const PixelBox& box, const gdiplus::OwnedAttributes& attributes) {
  return attributes && withinMemory([&] {
           ImageBits bits;
           const Matrix unit = {
               static_cast<double>(box.right), 0, 0, static_cast<double>(box.bottom), static_cast<double>(box.left),
               static_cast<double>(box.top)};
           return makeBits(image, quality().largestImage(), bits) && box.right > 0 && box.bottom > 0 &&
                  drawBitmap(bits, unit, attributes.get()->native, quality().stretchMode() != StretchMode::Fast);
         });
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
