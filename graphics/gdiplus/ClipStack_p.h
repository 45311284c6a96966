// ClipStack: the clip of a GDI+ context and the saved ones. Saving shares the region; the first change after that works
// on a copy.
//
// GDI+ keeps every combination that made a region, and copies and walks them all: nested clips would cost more with
// each level, in time, memory and stack. So a region that was combined a number of times is put in simple terms again.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "graphics/gdiplus/Wrappers_p.h"

#include <vector>

namespace corvix::gdiplus {

struct ClipRegion : Region {
  u32 combined = 0;     // since it was in simple terms
  bool isRect = false;  // `rect` is all of it
  Gdiplus::RectF rect;

  template <class Create>
  static ClipRegion* make(Create create) noexcept {
    return Region::make<ClipRegion>(create);
  }
};
struct DiscardClip : NullIsNone<ClipRegion*> {
  static void close(ClipRegion* handle) noexcept { discard(handle); }
};
using OwnedClip = OwningHandle<DiscardClip>;

class ClipStack {
 public:
  ClipStack() : saved_(1, nullptr) {}  // the bottom stays for good
  ~ClipStack() { clear(); }
  ClipStack(const ClipStack&) = delete;
  ClipStack& operator=(const ClipStack&) = delete;

  ClipRegion* current() const noexcept { return current_; }
  i32 savedCount() const noexcept { return static_cast<i32>(saved_.size()) - 1; }

  // Combines the current clip, on a region of its own, by `combine(native)`, or makes one by `create(&native)`. False,
  // with the clip as it was, when that cannot be done.
  template <class Combine, class Create>
  bool change(Combine combine, Create create) noexcept {
    if (!current_) return replace(makeWhole<OwnedClip>(create));
    if (!unshare() || !current_->keep(combine(current_->native))) return false;
    current_->isRect = false;
    combined();
    return true;
  }
  bool narrow(const Gdiplus::RectF& rect) noexcept;

  // The last change left a region that a Graphics cannot follow by the same change.
  bool wasSimplified() const noexcept { return current_ && !current_->combined; }

  // `region` may be empty: false then.
  bool replace(OwnedClip region) noexcept;
  void reset() noexcept;
  void clear() noexcept;  // the saved ones too
  void save();            // throws std::bad_alloc

  enum class Restored { Nothing, Same, Other };
  Restored restore() noexcept;

 private:
  bool isShared() const noexcept { return current_ && current_ == saved_.back(); }
  bool unshare() noexcept;
  void combined() noexcept;

  ClipRegion* current_ = nullptr;
  std::vector<ClipRegion*, HeapAllocator<ClipRegion*>>
      saved_;  // the same region only side by side, and on top as the current
};

}  // namespace corvix::gdiplus
