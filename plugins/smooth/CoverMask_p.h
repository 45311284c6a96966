// CoverMask: how much of each pixel of a box is seen, in runs: clips with soft edges, and soft masks.
#pragma once

#include "plugins/smooth/Figures_p.h"

#include <cstring>
#include <memory>

namespace corvix::smooth {

class CoverMask {
 public:
  explicit CoverMask(const PixelBox& box) : box_(box) {}

  // The next row from the top, as wide as the box. These throw std::bad_alloc.
  void addRow(const u8* covers);
  // The same by its runs, each up to `end` from the left of the box; nothing is seen behind the last.
  void add(i32 end, u32 cover) {
    if (runs_.size() > rowBegin_ && coverOf(runs_.back()) == cover) {
      runs_.back() = static_cast<u32>(end) << 8 | cover;
    } else if (end > (runs_.size() > rowBegin_ ? endOf(runs_.back()) : 0)) {
      runs_.push_back(static_cast<u32>(end) << 8 | cover);
    }
  }
  void endRow();

  const PixelBox& box() const noexcept { return box_; }
  bool isWhole() const noexcept;  // all of it is seen

  // Nothing is seen outside the box.
  void read(i32 x, i32 y, i32 count, u8* covers) const noexcept;
  u32 at(i32 x, i32 y) const noexcept;

  // Calls take(first, end) for what is seen by at least a half.
  template <class Take>
  void eachSeen(i32 y, Take take) const {
    const u32* run = runsOf(y);
    i32 first = 0;
    for (i32 x = 0; x < width(); x = endOf(*run++)) {
      if (coverOf(*run) < 128) {
        if (first < x) take(box_.left + first, box_.left + x);
        first = endOf(*run);
      }
    }
    if (first < width()) take(box_.left + first, box_.right);
  }

 private:
  // A run: where it ends, from the left of the box, and how much is seen.
  static constexpr i32 endOf(u32 run) noexcept { return static_cast<i32>(run >> 8); }
  static constexpr u32 coverOf(u32 run) noexcept { return run & 255; }
  i32 width() const noexcept { return box_.right - box_.left; }
  const u32* runsOf(i32 y) const noexcept { return &runs_[rows_[static_cast<std::size_t>(y - box_.top)]]; }

  PixelBox box_;
  HeapVector<u32> rows_;  // where its runs begin; equal neighbours share them
  HeapVector<u32> runs_;
  std::size_t rowBegin_ = 0;  // of the row that is made, in the runs
};

using SharedMask = std::shared_ptr<const CoverMask>;

}  // namespace corvix::smooth
