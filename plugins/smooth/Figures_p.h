// Figures: lines in device pixels, in the order in which a rasterizer takes them.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "graphics/Geometry.h"
#include "plugins/smooth/Pixels_p.h"

#include <vector>

namespace corvix::smooth {

template <class T>
using HeapVector = std::vector<T, HeapAllocator<T>>;

struct FigureStep {
  enum class Kind : u32 { Move, Line, Close };
  Point to;
  Kind kind;
};

class Figures {
 public:
  void clear() noexcept {
    if (steps_.capacity() > kMostKept) HeapVector<FigureStep>().swap(steps_);
    steps_.clear();
  }
  // These throw std::bad_alloc.
  void moveTo(Point to) { steps_.push_back({to, FigureStep::Kind::Move}); }
  void lineTo(Point to) { steps_.push_back({to, FigureStep::Kind::Line}); }
  void close() { steps_.push_back({{0, 0}, FigureStep::Kind::Close}); }

  const HeapVector<FigureStep>& steps() const noexcept { return steps_; }

 private:
  static constexpr std::size_t kMostKept = 0x4000;
  HeapVector<FigureStep> steps_;
};

}  // namespace corvix::smooth
