#include "graphics/gdiplus/ClipStack.h"

namespace corvix::gdiplus {

ClipStack::~ClipStack() {
  reset();
  const Region* last = nullptr;
  for (Region* region : saved_) {
    if (region != last) discard(region);
    if (region) last = region;
  }
}

bool ClipStack::unshare() noexcept {
  if (!isShared()) return true;
  OwnedRegion clone = makeWhole<OwnedRegion>(
      [this](Gdiplus::GpRegion** made) { return flat().GdipCloneRegion(current_->native, made); });
  if (!clone) return false;
  current_ = clone.release();
  return true;
}

bool ClipStack::replace(OwnedRegion region) noexcept {
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
  Region* const popped = saved_.back();
  saved_.pop_back();
  if (popped == current_) return Restored::Same;
  discard(current_);
  current_ = popped;
  return Restored::Other;
}

}  // namespace corvix::gdiplus
