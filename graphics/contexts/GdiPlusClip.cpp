// Clipping in a GDI+ context. Regions count from the origin, without the user transform.
#include "graphics/contexts/AGDC_p.h"

#include <algorithm>
#include <cfloat>
#include <utility>

namespace corvix {

using gdiplus::flat;

namespace {

constexpr double kFarthest = 1 << 22;  // pixels; no bitmap is as large

bool fits(double x, double y, double width, double height, Gdiplus::RectF& rect) noexcept {
  for (const double number : {x, y, width, height}) {
    if (!(std::abs(number) <= double{FLT_MAX})) return false;
  }
  // A negative size counts from the other side. Farther edges are brought nearer: floats would lose their last digits.
  const auto brought = [](double edge) { return std::clamp(edge, -kFarthest, kFarthest); };
  const Box box = {brought(std::min(x, x + width)), brought(std::min(y, y + height)), brought(std::max(x, x + width)),
                   brought(std::max(y, y + height))};
  rect = Gdiplus::RectF(static_cast<float>(box.left), static_cast<float>(box.top),
                        static_cast<float>(box.right - box.left), static_cast<float>(box.bottom - box.top));
  return true;
}

}  // namespace

// A cached Graphics gets the changed clip at once.
bool AGDC::clipChanged(bool isDone) noexcept {
  onDevice_.reset();
  if (!isDone || !graphics_) return isDone;
  auto& graphics = *graphics_.get();
  useWorld(World::Plain);
  if (clips_.current()) {
    graphics.keep(flat().GdipSetClipRegion(graphics.native, clips_.current()->native, Gdiplus::CombineModeReplace));
  } else {
    graphics.keep(flat().GdipResetClip(graphics.native));
  }
  return true;
}

bool AGDC::clipRect(double x, double y, double width, double height) {
  Gdiplus::RectF rect;
  if (!canDraw() || !fits(x, y, width, height, rect)) return false;
  if (!transform_.isIdentity()) {
    const Point corners[4] = {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}};
    return clipPolygon(corners, 4);
  }
  const bool isFirst = !clips_.current();
  const bool isDone = clips_.narrow(rect);
  if (isDone && !isFirst && clips_.wasSimplified()) return clipChanged(true);
  onDevice_.reset();
  if (isDone && graphics_ && isPrepared_) {
    auto& graphics = *graphics_.get();
    useWorld(World::Plain);
    graphics.keep(flat().GdipSetClipRect(graphics.native, rect.X, rect.Y, rect.Width, rect.Height,
                                         Gdiplus::CombineModeIntersect));
  }
  return isDone;
}

bool AGDC::excludeRect(double x, double y, double width, double height) {
  Gdiplus::RectF rect;
  if (!canDraw() || !transform_.isIdentity() || !fits(x, y, width, height, rect)) return false;
  if (!clips_.current()) {
    const PixelBox area = outputArea();
    const double areaWidth = static_cast<double>(area.right) - area.left;
    if (!clipRect(area.left, area.top, areaWidth, static_cast<double>(area.bottom) - area.top)) return false;
  }
  return clipChanged(clips_.change(
      [&](Gdiplus::GpRegion* region) {
        return flat().GdipCombineRegionRect(region, &rect, Gdiplus::CombineModeExclude);
      },
      [](Gdiplus::GpRegion**) { return Gdiplus::GenericError; }));
}

bool AGDC::clipRegion(RegionHandle region) {
  if (!canDraw() || !region) return false;
  const auto create = [region](Gdiplus::GpRegion** made) { return flat().GdipCreateRegionHrgn(region, made); };
  return clipChanged(clips_.change(
      [&](Gdiplus::GpRegion* current) {
        const auto other = gdiplus::makeWhole<gdiplus::OwnedRegion>(create);
        return other ? flat().GdipCombineRegionRegion(current, other.get()->native, Gdiplus::CombineModeIntersect)
                     : Gdiplus::OutOfMemory;
      },
      create));
}

bool AGDC::setClipRegion(RegionHandle region) {
  if (!canDraw()) return false;
  if (!region) return resetClip();
  return clipChanged(clips_.replace(gdiplus::makeWhole<gdiplus::OwnedClip>(
      [region](Gdiplus::GpRegion** made) { return flat().GdipCreateRegionHrgn(region, made); })));
}

bool AGDC::clipNothing() noexcept { return clipChanged(clips_.narrow(Gdiplus::RectF(0, 0, 0, 0))); }

// By the path in `native_`.
bool AGDC::clipByNative() noexcept {
  Gdiplus::GpPath* const native = native_.get()->native;
  return clipChanged(clips_.change(
      [native](Gdiplus::GpRegion* region) {
        return flat().GdipCombineRegionPath(region, native, Gdiplus::CombineModeIntersect);
      },
      [native](Gdiplus::GpRegion** made) { return flat().GdipCreateRegionPath(native, made); }));
}

bool AGDC::clipOut(const Path& path) {
  if (!path.hasPieces()) return clipNothing();
  if (!tracePath(path, transform_.isIdentity() ? nullptr : &transform_)) return false;
  const auto mode = fillRule_ == FillRule::Winding ? Gdiplus::FillModeWinding : Gdiplus::FillModeAlternate;
  native_.get()->keep(flat().GdipSetPathFillMode(native_.get()->native, mode));
  return clipByNative();
}

bool AGDC::clipStrokeOut(const Path& path, bool isCut) {
  // The thinnest line covers a pixel.
  const double thinnest = 1 / penScale();
  const bool isThin = isHairline_ || line_.width < thinnest;
  const double width = isThin ? std::exchange(line_.width, thinnest) : line_.width;
  const bool isHairline = std::exchange(isHairline_, false);
  isPenStale_ = isPenStale_ || isThin;
  const bool isReady = preparePen(isCut || isHairline) && tracePath(path, nullptr);
  line_.width = width;
  isHairline_ = isHairline;
  isPenStale_ = isPenStale_ || isThin;
  if (!isReady) return false;
  Gdiplus::GpPath* const native = native_.get()->native;
  native_.get()->keep(flat().GdipSetPathFillMode(native, Gdiplus::FillModeWinding));
  if (!native_.get()->keep(
          flat().GdipWidenPath(native, pen_.get()->native, nullptr, static_cast<float>(0.25 / penScale())))) {
    return false;
  }
  native_.get()->keep(flat().GdipSetPathFillMode(native, Gdiplus::FillModeWinding));
  if (!transform_.isIdentity() && matrix_ && matrix_.get()->native) {
    native_.get()->keep(flat().GdipTransformPath(native, matrix_.get()->native));
  }
  return clipByNative();
}

bool AGDC::resetClip() {
  if (!canDraw()) return false;
  if (!clips_.current()) return true;
  clips_.reset();
  return clipChanged(true);
}

bool AGDC::saveClip() {
  return canDraw() && withinMemory([this] {
           clips_.save();
           return true;
         });
}

bool AGDC::restoreClip() {
  if (!canDraw()) return false;
  switch (clips_.restore()) {
    case gdiplus::ClipStack::Restored::Nothing:
      return false;
    case gdiplus::ClipStack::Restored::Same:
      return true;
    case gdiplus::ClipStack::Restored::Other:
      break;
  }
  return clipChanged(true);
}

RegionHandle AGDC::copyClipRegion() {
  HRGN copy = nullptr;
  if (!clips_.current() ||
      !clips_.current()->keep(flat().GdipGetRegionHRgn(clips_.current()->native, nullptr, &copy))) {
    return nullptr;
  }
  return copy;
}

HRGN AGDC::deviceClip() noexcept {
  if (clips_.current() && !onDevice_) {
    onDevice_.reset(copyClipRegion());
    if (!onDevice_) onDevice_.reset(CreateRectRgn(0, 0, 0, 0));  // rather nothing than too much
    int left = 0;
    int top = 0;
    gdi::roundPixel(origin_.x, left);
    gdi::roundPixel(origin_.y, top);
    OffsetRgn(onDevice_.get(), left, top);
  }
  return onDevice_.get();
}

bool AGDC::clipBounds(Box* bounds) {
  if (!bounds || !prepare()) return false;
  const PixelBox area = outputArea();
  Box box = {static_cast<double>(area.left), static_cast<double>(area.top), static_cast<double>(area.right),
             static_cast<double>(area.bottom)};
  Gdiplus::RectF clip;
  if (clips_.current()) {
    if (!graphics_.get()->keep(flat().GdipGetClipBounds(graphics_.get()->native, &clip))) return false;
    box = {std::max(box.left, double{clip.X}), std::max(box.top, double{clip.Y}),
           std::min(box.right, double{clip.X} + clip.Width), std::min(box.bottom, double{clip.Y} + clip.Height)};
    if (box.left >= box.right || box.top >= box.bottom) box = {0, 0, 0, 0};
  }
  *bounds = box;
  return true;
}

bool AGDC::isClipEmpty() {
  if (!prepare()) return false;
  BOOL isEmpty = FALSE;
  if (!graphics_.get()->keep(flat().GdipIsClipEmpty(graphics_.get()->native, &isEmpty))) return false;
  Box bounds;
  return isEmpty || (clipBounds(&bounds) && bounds.left >= bounds.right);
}

bool AGDC::isPointVisible(double x, double y) {
  const Point p = transform_.apply({x, y});
  const PixelBox area = outputArea();
  if (!canDraw() || !(p.x >= area.left && p.x < area.right && p.y >= area.top && p.y < area.bottom)) return false;
  if (!clips_.current()) return true;
  BOOL isVisible = FALSE;
  flat().GdipIsVisibleRegionPoint(clips_.current()->native, static_cast<float>(p.x), static_cast<float>(p.y), nullptr,
                                  &isVisible);
  return isVisible != FALSE;
}

bool AGDC::isRectVisible(double x, double y, double width, double height) {
  const PixelBox area = outputArea();
  const Point a = transform_.apply({x, y});
  const Point b = transform_.apply({x + width, y + height});
  const Point c = transform_.apply({x + width, y});
  const Point d = transform_.apply({x, y + height});
  if (!isFinite(a) || !isFinite(b) || !isFinite(c) || !isFinite(d)) return false;
  const double left = std::max(std::min({a.x, b.x, c.x, d.x}), static_cast<double>(area.left));
  const double top = std::max(std::min({a.y, b.y, c.y, d.y}), static_cast<double>(area.top));
  const double right = std::min(std::max({a.x, b.x, c.x, d.x}), static_cast<double>(area.right));
  const double bottom = std::min(std::max({a.y, b.y, c.y, d.y}), static_cast<double>(area.bottom));
  if (!canDraw() || !(left < right && top < bottom)) return false;
  if (!clips_.current()) return true;
  BOOL isVisible = FALSE;
  flat().GdipIsVisibleRegionRect(clips_.current()->native, static_cast<float>(left), static_cast<float>(top),
                                 static_cast<float>(right - left), static_cast<float>(bottom - top), nullptr,
                                 &isVisible);
  return isVisible != FALSE;
}

}  // namespace corvix
