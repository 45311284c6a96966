#include "graphics/gdiplus/ClipStack_p.h"

#include "graphics/gdi/Gdi_p.h"

#include <utility>

namespace corvix::gdiplus {

namespace {

constexpr u32 kMostCombined = 16;

Gdiplus::RectF common(const Gdiplus::RectF& a, const Gdiplus::RectF& b) noexcept {
  const float left = std::max(a.X, b.X);
  const float top = std::max(a.Y, b.Y);
  const float right = std::min(a.X + a.Width, b.X + b.Width);
  const float bottom = std::min(a.Y + a.Height, b.Y + b.Height);
  return {left, top, std::max(right - left, 0.0F), std::max(bottom - top, 0.0F)};
}

// What is no rectangle is taken as the pixels that it lets through.
Gdiplus::GpStatus simpler(const ClipRegion& region, Gdiplus::GpRegion** made) noexcept {
  if (region.isRect) return flat().GdipCreateRegionRect(&region.rect, made);
  HRGN pixels = nullptr;
  const Gdiplus::GpStatus status = flat().GdipGetRegionHRgn(region.native, nullptr, &pixels);
  const gdi::Region owned(pixels);
  return status == Gdiplus::Ok && owned ? flat().GdipCreateRegionHrgn(pixels, made) : Gdiplus::GenericError;
}

}  // namespace

void ClipStack::clear() noexcept {
  reset();
  const ClipRegion* last = nullptr;
  for (ClipRegion* region : saved_) {
    if (region != last) discard(region);
    if (region) last = region;
  }
  saved_.resize(1);
}

bool ClipStack::unshare() noexcept {
  if (!isShared()) return true;
  OwnedClip clone =
      makeWhole<OwnedClip>([this](Gdiplus::GpRegion** made) { return flat().GdipCloneRegion(current_->native, made); });
  if (!clone) return false;
  clone.get()->combined = current_->combined;
  clone.get()->isRect = current_->isRect;
  clone.get()->rect = current_->rect;
  current_ = clone.release();
  return true;
}

void ClipStack::combined() noexcept {
  if (++current_->combined < kMostCombined) return;
  Gdiplus::GpRegion* simple = nullptr;
  if (!current_->keep(simpler(*current_, &simple))) return;
  destroy(std::exchange(current_->native, simple));
  current_->combined = 0;
}

bool ClipStack::narrow(const Gdiplus::RectF& rect) noexcept {
  if (!current_) {
    if (!replace(
            makeWhole<OwnedClip>([&](Gdiplus::GpRegion** made) { return flat().GdipCreateRegionRect(&rect, made); }))) {
      return false;
    }
    current_->isRect = true;
    current_->rect = rect;
    return true;
  }
  if (!unshare() ||
      !current_->keep(flat().GdipCombineRegionRect(current_->native, &rect, Gdiplus::CombineModeIntersect))) {
    return false;
  }
  if (current_->isRect) current_->rect = common(current_->rect, rect);
  combined();
  return true;
}

bool ClipStack::replace(OwnedClip region) noexcept {
  if (!region) return false;
  reset();
  current_ = region.release();
  return true;
}

void ClipStack::reset() noexcept {
  if (!isShared()) discard(current_);
  current_ = nullptr;
}

void ClipStack::save() { saved_.push_back(current_); }

ClipStack::Restored ClipStack::restore() noexcept {
  if (saved_.size() == 1) return Restored::Nothing;
  ClipRegion* const popped = saved_.back();
  saved_.pop_back();
  if (popped == current_) return Restored::Same;
  discard(current_);
  current_ = popped;
  return Restored::Other;
}

}  // namespace corvix::gdiplus
