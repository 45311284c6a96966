// The clip of a plain GDI context: one region from the origin, and saved ones. Regions are shared until one changes, so
// that saving costs no object of the system's.
#include "graphics/contexts/PlainContext_p.h"

namespace corvix {

namespace {

gdi::Region copyOf(HRGN region) noexcept {
  gdi::Region copy(CreateRectRgn(0, 0, 0, 0));
  if (copy && CombineRgn(copy.get(), region, nullptr, RGN_COPY) == ERROR) copy.reset();
  return copy;
}

}  // namespace

void AGDCPlain::applyClip() noexcept {
  onDevice_.reset();
  if (!isAttached_) return;
  if (!clip_) {
    SelectClipRgn(device_, baseClip_.get());
    return;
  }
  const HRGN clip = clip_->get();
  const POINT shift = {baseOrigin_.x + viewport_.x, baseOrigin_.y + viewport_.y};
  OffsetRgn(clip, shift.x, shift.y);
  SelectClipRgn(device_, clip);
  OffsetRgn(clip, -shift.x, -shift.y);
  if (baseClip_) ExtSelectClipRgn(device_, baseClip_.get(), RGN_AND);
}

HRGN AGDCPlain::deviceClip() noexcept {
  if (clip_ && !onDevice_) {
    onDevice_ = copyOf(clip_->get());
    if (onDevice_) OffsetRgn(onDevice_.get(), viewport_.x, viewport_.y);
  }
  return onDevice_.get();
}

bool AGDCPlain::intersect(gdi::Region region) {
  if (!clip_) {
    if (!region) return false;
    clip_ = std::make_shared<gdi::Region>(std::move(region));
    applyClip();
    return true;
  }
  return combine(std::move(region), RGN_AND);
}

// With the clip there is; on a region of its own when that one is saved too.
bool AGDCPlain::combine(gdi::Region region, int mode) {
  if (!region) return false;
  if (clip_.use_count() > 1) {
    gdi::Region own(CreateRectRgn(0, 0, 0, 0));
    if (!own || CombineRgn(own.get(), clip_->get(), region.get(), mode) == ERROR) return false;
    clip_ = std::make_shared<gdi::Region>(std::move(own));
  } else if (CombineRgn(clip_->get(), clip_->get(), region.get(), mode) == ERROR) {
    return false;
  }
  applyClip();
  return true;
}

bool AGDCPlain::clipRect(double x, double y, double width, double height) {
  RECT rect;
  return isAttached_ && gdi::roundRect(x, y, x + width, y + height, rect) &&
         withinMemory([&] { return intersect(gdi::Region(CreateRectRgnIndirect(&rect))); });
}

bool AGDCPlain::excludeRect(double x, double y, double width, double height) {
  RECT rect;
  if (!isAttached_ || !gdi::roundRect(x, y, x + width, y + height, rect)) return false;
  return withinMemory([&] {
    if (!clip_) {
      const PixelBox area = outputArea();
      if (!intersect(gdi::Region(CreateRectRgn(area.left, area.top, area.right, area.bottom)))) return false;
    }
    return combine(gdi::Region(CreateRectRgnIndirect(&rect)), RGN_DIFF);
  });
}

bool AGDCPlain::clipRegion(RegionHandle region) {
  return isAttached_ && region && withinMemory([&] { return intersect(copyOf(region)); });
}

bool AGDCPlain::clipOut(const Path& path) {
  if (!path.hasPieces()) return intersect(gdi::Region(CreateRectRgn(0, 0, 0, 0)));
  if (!tracePath(path)) return false;
  SetPolyFillMode(device_, fillRule_ == FillRule::Winding ? WINDING : ALTERNATE);
  gdi::Region region(PathToRegion(device_));
  if (!region) region.reset(CreateRectRgn(0, 0, 0, 0));  // a path without area
  OffsetRgn(region.get(), -baseOrigin_.x - viewport_.x, -baseOrigin_.y - viewport_.y);
  return intersect(std::move(region));
}

bool AGDCPlain::clipStrokeOut(const Path& path, bool isCut) {
  const PenKind kind = std::exchange(pen_.kind, PenKind::Geometric);  // only such a pen has an outline
  const bool isHairline = kind == PenKind::Hairline;
  const double width = isHairline ? std::exchange(line_.width, 1) : line_.width;
  isPenStale_ = true;
  const bool isWidened = preparePen(isCut || isHairline) && tracePath(path) && WidenPath(device_);
  line_.width = width;
  pen_.kind = kind;
  isPenStale_ = true;
  if (!isWidened) {
    AbortPath(device_);
    return false;
  }
  SetPolyFillMode(device_, WINDING);
  gdi::Region region(PathToRegion(device_));
  if (!region) region.reset(CreateRectRgn(0, 0, 0, 0));
  OffsetRgn(region.get(), -baseOrigin_.x - viewport_.x, -baseOrigin_.y - viewport_.y);
  return intersect(std::move(region));
}

bool AGDCPlain::resetClip() {
  if (!isAttached_) return false;
  if (!clip_) return true;
  clip_.reset();
  applyClip();
  return true;
}

bool AGDCPlain::saveClip() {
  return isAttached_ && withinMemory([&] {
           saved_.push_back(clip_);
           return true;
         });
}

bool AGDCPlain::restoreClip() {
  if (!isAttached_ || saved_.empty()) return false;
  SharedRegion popped = std::move(saved_.back());
  saved_.pop_back();
  if (popped == clip_) return true;
  clip_ = std::move(popped);
  applyClip();
  return true;
}

bool AGDCPlain::setClipRegion(RegionHandle region) {
  if (!isAttached_) return false;
  if (!region) return resetClip();
  return withinMemory([&] {
    gdi::Region copy = copyOf(region);
    if (!copy) return false;
    clip_ = std::make_shared<gdi::Region>(std::move(copy));
    applyClip();
    return true;
  });
}

RegionHandle AGDCPlain::copyClipRegion() { return clip_ ? copyOf(clip_->get()).release() : nullptr; }

bool AGDCPlain::clipBounds(Box* bounds) {
  if (!isAttached_ || !bounds) return false;
  const PixelBox area = outputArea();
  RECT box = {area.left, area.top, area.right, area.bottom};
  RECT clip;
  if (clip_ && (GetRgnBox(clip_->get(), &clip) == ERROR || !IntersectRect(&box, &box, &clip))) box = {};
  *bounds = {static_cast<double>(box.left), static_cast<double>(box.top), static_cast<double>(box.right),
             static_cast<double>(box.bottom)};
  return true;
}

bool AGDCPlain::isClipEmpty() {
  Box bounds;
  return clipBounds(&bounds) && (bounds.left >= bounds.right || bounds.top >= bounds.bottom);
}

bool AGDCPlain::isPointVisible(double x, double y) {
  int left;
  int top;
  const PixelBox area = outputArea();
  if (!isAttached_ || !gdi::roundPixel(x, left) || !gdi::roundPixel(y, top)) return false;
  return left >= area.left && left < area.right && top >= area.top && top < area.bottom &&
         (!clip_ || PtInRegion(clip_->get(), left, top));
}

bool AGDCPlain::isRectVisible(double x, double y, double width, double height) {
  RECT rect;
  const PixelBox area = outputArea();
  const RECT output = {area.left, area.top, area.right, area.bottom};
  return isAttached_ && gdi::roundRect(x, y, x + width, y + height, rect) && IntersectRect(&rect, &rect, &output) &&
         (!clip_ || RectInRegion(clip_->get(), &rect));
}

}  // namespace corvix
