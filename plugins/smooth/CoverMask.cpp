#include "plugins/smooth/CoverMask_p.h"

namespace corvix::smooth {

void CoverMask::addRow(const u8* covers) {
  for (i32 x = 0; x < width();) {
    const u8 cover = covers[x];
    while (x < width() && covers[x] == cover) ++x;
    add(x, cover);
  }
  endRow();
}

void CoverMask::endRow() {
  add(width(), 0);
  const std::size_t count = runs_.size() - rowBegin_;
  const std::size_t before = rows_.empty() ? rowBegin_ : rows_.back();
  const auto at = [this](std::size_t index) { return runs_.begin() + static_cast<std::ptrdiff_t>(index); };
  const bool isSame = before + count == rowBegin_ && std::equal(at(before), at(rowBegin_), at(rowBegin_));
  rows_.push_back(static_cast<u32>(isSame ? before : rowBegin_));
  if (isSame) runs_.resize(rowBegin_);
  rowBegin_ = runs_.size();
}

bool CoverMask::isWhole() const noexcept {
  return std::all_of(runs_.begin(), runs_.end(), [](u32 run) { return coverOf(run) == 255; });
}

void CoverMask::read(i32 x, i32 y, i32 count, u8* covers) const noexcept {
  std::memset(covers, 0, static_cast<std::size_t>(count));
  if (y < box_.top || y >= box_.bottom) return;
  const u32* run = runsOf(y);
  const i32 first = std::max(x, box_.left) - box_.left;
  const i32 end = std::min(x + count, box_.right) - box_.left;
  for (i32 at = first; at < end; ++run) {
    const i32 to = std::min(endOf(*run), end);
    if (to <= at) continue;
    std::memset(covers + (at + box_.left - x), static_cast<int>(coverOf(*run)), static_cast<std::size_t>(to - at));
    at = to;
  }
}

u32 CoverMask::at(i32 x, i32 y) const noexcept {
  u8 cover;
  read(x, y, 1, &cover);
  return cover;
}

}  // namespace corvix::smooth
