// The clip of a smooth context: a box, and within it how much of each pixel is seen. Saved ones share their masks.
#include "plugins/smooth/SmoothContext_p.h"

namespace corvix::smooth {

namespace {

// Rows of a mask, one after the other, out of what a rasterizer tells of them: by bytes where a former mask is to be
// multiplied with, else by runs.
class MaskRows {
 public:
  MaskRows(CoverMask& mask, const PlacedMask& former, const PixelBox& box, bool isInside)
      : mask_(mask), former_(former), box_(box), around_(isInside ? 0 : 255), y_(box.top) {
    if (!former.mask) return;
    row_.resize(static_cast<std::size_t>(box.right - box.left), around_);
    other_.resize(row_.size());
  }

  void run(i32 x, i32 y, i32 count, u32 cover) {
    const i32 first = std::max(x, box_.left);
    const i32 end = std::min(x + count, box_.right);
    if (!reach(y) || first >= end) return;
    put(first - box_.left, end - box_.left, cover);
  }
  void many(i32 x, i32 y, i32 count, const u8* covers) {
    const i32 first = std::max(x, box_.left);
    const i32 end = std::min(x + count, box_.right);
    if (!reach(y)) return;
    for (i32 at = first; at < end; ++at) put(at - box_.left, at + 1 - box_.left, covers[at - x]);
  }
  void finish() { reach(box_.bottom); }

 private:
  void put(i32 first, i32 end, u32 cover) {
    if (around_) cover = 255 - cover;
    if (former_.mask) {
      std::memset(&row_[static_cast<std::size_t>(first)], static_cast<int>(cover),
                  static_cast<std::size_t>(end - first));
      return;
    }
    mask_.add(first, around_);
    mask_.add(end, cover);
  }
  bool reach(i32 y) {
    for (; y_ < std::min(y, box_.bottom); ++y_) {
      if (former_.mask) {
        const auto width = static_cast<i32>(row_.size());
        former_.mask->read(box_.left - former_.x, y_ - former_.y, width, other_.data());
        spans().multiply(row_.data(), other_.data(), width);
        mask_.addRow(row_.data());
        std::fill(row_.begin(), row_.end(), around_);
      } else {
        mask_.add(box_.right - box_.left, around_);
        mask_.endRow();
      }
    }
    return y >= box_.top && y < box_.bottom;
  }

  CoverMask& mask_;
  PlacedMask former_;
  PixelBox box_;
  u8 around_;  // what is seen where nothing is told of
  i32 y_;
  HeapVector<u8> row_;
  HeapVector<u8> other_;
};

// The rectangles of a region, from the top.
bool isRegion(HRGN region) noexcept { return GetObjectType(region) == OBJ_REGION; }

HeapVector<RECT> rectanglesOf(HRGN region) {
  HeapVector<u8> data(GetRegionData(region, 0, nullptr));
  auto* const rows = reinterpret_cast<RGNDATA*>(data.data());
  if (data.empty() || !GetRegionData(region, static_cast<DWORD>(data.size()), rows)) return {};
  const auto* const rects = reinterpret_cast<const RECT*>(rows->Buffer);
  return {rects, rects + rows->rdh.nCount};
}

gdi::Region regionOf(const HeapVector<RECT>& rects) {
  const std::size_t bytes = rects.size() * sizeof(RECT);
  HeapVector<u8> data(sizeof(RGNDATAHEADER) + bytes);
  auto* const rows = reinterpret_cast<RGNDATA*>(data.data());
  rows->rdh = {sizeof(RGNDATAHEADER), RDH_RECTANGLES, static_cast<DWORD>(rects.size()), static_cast<DWORD>(bytes), {}};
  std::memcpy(rows->Buffer, rects.data(), bytes);
  return gdi::Region(rects.empty() ? CreateRectRgn(0, 0, 0, 0)
                                   : ExtCreateRegion(nullptr, static_cast<DWORD>(data.size()), rows));
}

}  // namespace

SmoothContext::Clip SmoothContext::wholeClip() const noexcept {
  if (layers_.empty()) return {};
  i32 x;
  i32 y;
  wholeOrigin(x, y);
  return {true, moved(layers_.back().box, -x, -y), nullptr};
}

void SmoothContext::narrow(const PixelBox& box) {
  const PixelBox narrowed = clip_.isNarrow ? intersected(clip_.box, box) : box;
  clip_.box = isEmpty(narrowed) ? PixelBox{0, 0, 0, 0} : narrowed;
  clip_.isNarrow = true;
  if (isEmpty(narrowed)) clip_.mask.reset();
  clipChanged();
}

void SmoothContext::narrowByFigures(FillRule rule, bool isInside) {
  i32 x;
  i32 y;
  wholeOrigin(x, y);
  PixelBox box = clipBox();
  rasterizer_.take(figures_, box);
  if (isInside) box = intersected(box, rasterizer_.rows());
  if (isEmpty(box)) return narrow({0, 0, 0, 0});
  auto mask = std::allocate_shared<CoverMask>(HeapAllocator<CoverMask>(), moved(box, -x, -y));
  MaskRows rows(*mask, placed(clip_.mask), box, isInside);
  rasterizer_.sweep(rule, isSmooth(), rows);
  rows.finish();
  narrow(mask->box());
  if (mask->isWhole()) {
    clip_.mask.reset();
  } else {
    clip_.mask = std::move(mask);
  }
}

bool SmoothContext::clipRect(double x, double y, double width, double height) {
  if (!canDraw() || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  return withinMemory([&] {
    PixelBox box;
    if (!isSingular_ && isOnPixels(x, y, width, height, box)) {
      i32 left;
      i32 top;
      wholeOrigin(left, top);
      narrow(moved(box, -left, -top));
      return true;
    }
    Path path;
    path.rectangle(x, y, width, height);
    return clipTo(path);
  });
}

bool SmoothContext::excludeRect(double x, double y, double width, double height) {
  if (!prepare() || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  return withinMemory([&] {
    Path path;
    path.rectangle(x, y, width, height);
    trace(path, clipBox());
    narrowByFigures(FillRule::Winding, false);
    return true;
  });
}

bool SmoothContext::clipOut(const Path& path) {
  if (!prepare()) return false;
  trace(path, clipBox());
  narrowByFigures(fillRule_, true);
  return true;
}

bool SmoothContext::clipStrokeOut(const Path& path, bool) {
  if (!prepare()) return false;
  const double thinnest = 1 / penScale();
  const double width = std::exchange(line_.width, std::max(line_.width, thinnest));
  bool isTraced = false;
  try {
    traceStroke(path, clipBox());
    isTraced = true;
  } catch (const std::bad_alloc&) {
  }
  line_.width = width;
  if (isTraced) narrowByFigures(FillRule::Winding, true);
  return isTraced;
}

// Null when the region is a box.
SharedMask SmoothContext::maskOf(HRGN region, PixelBox& box) const {
  const HeapVector<RECT> rects = rectanglesOf(region);
  box = {0, 0, 0, 0};
  for (const RECT& rect : rects) box = united(box, {rect.left, rect.top, rect.right, rect.bottom});
  i32 x;
  i32 y;
  wholeOrigin(x, y);
  if (rects.size() < 2) return nullptr;
  box = intersected(box, moved(surface().box, -x, -y));
  if (isEmpty(box)) return nullptr;
  auto mask = std::allocate_shared<CoverMask>(HeapAllocator<CoverMask>(), box);
  HeapVector<u8> row(static_cast<std::size_t>(box.right - box.left));
  std::size_t next = 0;
  for (i32 line = box.top; line < box.bottom; ++line) {
    std::fill(row.begin(), row.end(), u8{0});
    while (next < rects.size() && rects[next].bottom <= line) ++next;
    for (std::size_t i = next; i < rects.size() && rects[i].top <= line; ++i) {
      const i32 first = std::max<i32>(rects[i].left, box.left);
      const i32 end = std::min<i32>(rects[i].right, box.right);
      if (first < end) std::fill(&row[0] + (first - box.left), &row[0] + (end - box.left), u8{255});
    }
    mask->addRow(row.data());
  }
  return mask;
}

bool SmoothContext::clipRegion(RegionHandle region) {
  if (!isRegion(region) || !prepare()) return false;
  return withinMemory([&] {
    PixelBox box;
    const SharedMask mask = maskOf(region, box);
    if (!mask || !clip_.mask) {
      narrow(box);
      if (mask) clip_.mask = mask;
      return true;
    }
    // Both are masks: row by row.
    const PixelBox both = intersected(mask->box(), clip_.box);
    if (isEmpty(both)) {
      narrow({0, 0, 0, 0});
      return true;
    }
    auto made = std::allocate_shared<CoverMask>(HeapAllocator<CoverMask>(), both);
    MaskRows rows(*made, {clip_.mask}, both, true);
    HeapVector<u8> row(static_cast<std::size_t>(both.right - both.left));
    for (i32 y = both.top; y < both.bottom; ++y) {
      mask->read(both.left, y, both.right - both.left, row.data());
      rows.many(both.left, y, both.right - both.left, row.data());
    }
    rows.finish();
    narrow(both);
    clip_.mask = std::move(made);
    return true;
  });
}

bool SmoothContext::setClipRegion(RegionHandle region) {
  if (!canDraw()) return false;
  if (!region) return resetClip();
  if (!isRegion(region) || !prepare()) return false;
  return withinMemory([&] {
    PixelBox box;
    SharedMask mask = maskOf(region, box);
    clip_ = wholeClip();
    narrow(box);
    clip_.mask = std::move(mask);
    return true;
  });
}

bool SmoothContext::resetClip() {
  if (!canDraw()) return false;
  clip_ = wholeClip();
  clipChanged();
  return true;
}

bool SmoothContext::saveClip() {
  return canDraw() && withinMemory([&] {
           saved_.push_back(clip_);
           return true;
         });
}

bool SmoothContext::restoreClip() {
  if (!canDraw() || saved_.empty()) return false;
  clip_ = std::move(saved_.back());
  saved_.pop_back();
  clipChanged();
  return true;
}

// What is seen by a half at least.
RegionHandle SmoothContext::copyClipRegion() {
  if (!clip_.isNarrow) return nullptr;
  gdi::Region region;
  withinMemory([&] {
    if (!clip_.mask) {
      region.reset(CreateRectRgn(clip_.box.left, clip_.box.top, clip_.box.right, clip_.box.bottom));
      return true;
    }
    const PixelBox box = intersected(clip_.box, clip_.mask->box());
    HeapVector<RECT> rects;
    for (i32 y = box.top; y < box.bottom; ++y) {
      clip_.mask->eachSeen(y, [&](i32 first, i32 end) {
        first = std::max(first, box.left);
        end = std::min(end, box.right);
        if (first < end) rects.push_back({first, y, end, y + 1});
      });
    }
    region = regionOf(rects);
    return true;
  });
  return region.release();
}

HRGN SmoothContext::deviceClip() noexcept {
  if (!clip_.isNarrow) return nullptr;
  if (!onDevice_) {
    onDevice_.reset(copyClipRegion());
    if (!onDevice_) onDevice_.reset(CreateRectRgn(0, 0, 0, 0));  // rather nothing than too much
    i32 x;
    i32 y;
    wholeOrigin(x, y);
    OffsetRgn(onDevice_.get(), x, y);
  }
  return onDevice_.get();
}

bool SmoothContext::clipBounds(Box* bounds) {
  if (!bounds || !prepare()) return false;
  i32 x;
  i32 y;
  wholeOrigin(x, y);
  const PixelBox area = outputArea();
  const PixelBox box = clip_.isNarrow ? intersected(area, clip_.box) : area;
  *bounds = isEmpty(box)
                ? Box{0, 0, 0, 0}
                : Box{double{1} * box.left, double{1} * box.top, double{1} * box.right, double{1} * box.bottom};
  return true;
}

bool SmoothContext::isClipEmpty() {
  Box bounds;
  return clipBounds(&bounds) && (bounds.left >= bounds.right || bounds.top >= bounds.bottom);
}

bool SmoothContext::isPointVisible(double x, double y) {
  const Point p = transform_.apply({x, y});
  const PixelBox area = outputArea();
  if (!canDraw() || !(p.x >= area.left && p.x < area.right && p.y >= area.top && p.y < area.bottom)) return false;
  const auto left = static_cast<i32>(std::floor(p.x));
  const auto top = static_cast<i32>(std::floor(p.y));
  const PixelBox& box = clip_.box;
  return !clip_.isNarrow || (left >= box.left && left < box.right && top >= box.top && top < box.bottom &&
                             (!clip_.mask || clip_.mask->at(left, top) >= 128));
}

bool SmoothContext::isRectVisible(double x, double y, double width, double height) {
  Box box = {0, 0, 0, 0};
  Path path;
  const bool isThere = canDraw() && isFinite({x, y}) && isFinite({x + width, y + height}) && withinMemory([&] {
                         path.rectangle(x, y, width, height);
                         return path.bounds(transform_, box);
                       });
  if (!isThere) return false;
  const PixelBox area = outputArea();
  const auto edge = [](double value) { return static_cast<i32>(std::clamp(value, -gdi::kGreatest, gdi::kGreatest)); };
  PixelBox seen = intersected(area, {edge(std::floor(box.left)), edge(std::floor(box.top)), edge(std::ceil(box.right)),
                                     edge(std::ceil(box.bottom))});
  if (clip_.isNarrow) seen = intersected(seen, clip_.box);
  if (isEmpty(seen) || !clip_.mask) return !isEmpty(seen);
  seen = intersected(seen, clip_.mask->box());
  bool isSeen = false;
  for (i32 line = seen.top; line < seen.bottom && !isSeen; ++line) {
    clip_.mask->eachSeen(line, [&](i32 first, i32 end) { isSeen = isSeen || (first < seen.right && end > seen.left); });
  }
  return isSeen;
}

}  // namespace corvix::smooth
