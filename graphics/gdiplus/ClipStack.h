// ClipStack: the clip of a GDI+ context and the saved ones. Saving shares the region; the first change after that works
// on a copy.
#pragma once

#include "core/baselib/memory/HeapAllocated.h"
#include "graphics/gdiplus/Wrappers.h"

#include <vector>

namespace corvix::gdiplus {

class ClipStack {
 public:
  ClipStack() : saved_(1, nullptr) {}  // the bottom stays for good
  ~ClipStack();
  ClipStack(const ClipStack&) = delete;
  ClipStack& operator=(const ClipStack&) = delete;

  Region* current() const noexcept { return current_; }
  i32 savedCount() const noexcept { return static_cast<i32>(saved_.size()) - 1; }

  // Combines the current clip, on a region of its own, by `combine(native)`, or makes one by `create(&native)`. False,
  // with the clip as it was, when that cannot be done.
  template <class Combine, class Create>
  bool change(Combine combine, Create create) noexcept {
    if (!current_) return replace(makeWhole<OwnedRegion>(create));
    if (!unshare()) return false;
    return current_->keep(combine(current_->native));
  }

  // `region` may be empty: false then.
  bool replace(OwnedRegion region) noexcept;
  void reset() noexcept;
  void save();  // throws std::bad_alloc

  enum class Restored { Nothing, Same, Other };
  Restored restore() noexcept;

 private:
  bool isShared() const noexcept { return current_ && current_ == saved_.back(); }
  bool unshare() noexcept;

  Region* current_ = nullptr;
  std::vector<Region*, HeapAllocator<Region*>> saved_;  // the same region only side by side, and on top as the current
};

}  // namespace corvix::gdiplus
