#include "graphics/path/PathClip_p.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr double kTolerance = 0.1;  // pixels
constexpr double kDot = 1e-6;       // of a line's length: what a dash of length 0 gets, so that it has a direction

using Points = std::vector<Point, HeapAllocator<Point>>;

// One figure at a time as a polygon in user units.
template <class Take>
class Figures {
 public:
  Figures(const Matrix& matrix, const Box& area, Take take) : matrix_(matrix), area_(area), take_(take) {}

  bool move(Point p) {
    finish(false);
    points_.push_back(p);
    return true;
  }
  bool line(Point p) {
    points_.push_back(p);
    return true;
  }
  bool curve(Point p1, Point p2, Point p3) {
    flattenCurve({points_.back(), p1, p2, p3}, matrix_, area_, kTolerance, [this](Point p) { points_.push_back(p); });
    return true;
  }
  bool close() {
    finish(true);
    return true;
  }
  void finish(bool isClosed) {
    if (points_.size() > 1) take_(points_, isClosed);
    points_.clear();
  }

 private:
  const Matrix& matrix_;
  const Box& area_;
  Take take_;
  Points points_;
};

template <class Take>
void eachFigure(const Path& path, const Matrix& matrix, const Box& area, Take take) {
  Figures<Take> figures(matrix, area, take);
  path.replay(figures);
  figures.finish(false);
}

// Liang-Barsky: the part of a segment inside the area, as fractions of it.
bool visiblePart(Point from, Point to, const Box& area, double& first, double& last) noexcept {
  first = 0;
  last = 1;
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  const double steps[4] = {-dx, dx, -dy, dy};
  const double rooms[4] = {from.x - area.left, area.right - from.x, from.y - area.top, area.bottom - from.y};
  for (int side = 0; side < 4; ++side) {
    if (steps[side] == 0) {
      if (rooms[side] < 0) return false;
    } else if (steps[side] < 0) {
      first = std::max(first, rooms[side] / steps[side]);
    } else {
      last = std::min(last, rooms[side] / steps[side]);
    }
  }
  return first <= last;
}

Point between(Point from, Point to, double part) noexcept {
  if (part <= 0) return from;
  if (part >= 1) return to;
  return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
}

// Writes visible pieces, joined where they touch and cut into dashes.
class StrokePieces {
 public:
  StrokePieces(Path& to, const DashPattern& dash) : to_(to), dash_(dash) {
    for (std::size_t i = 0; i < dash.count; ++i) period_ += dash.lengths[i];
  }

  void startFigure() noexcept {
    isConnected_ = false;
    if (!dash_.count) return;
    double phase = std::fmod(dash_.phase, period_);
    if (phase < 0) phase += period_;
    index_ = 0;
    while (phase >= dash_.lengths[index_] && phase > 0) {
      phase -= dash_.lengths[index_];
      index_ = (index_ + 1) % dash_.count;
    }
    left_ = dash_.lengths[index_] - phase;
  }

  void segment(Point from, Point to, double first, double last, bool isVisible) {
    if (!dash_.count) {
      if (isVisible) piece(between(from, to, first), between(from, to, last));
      if (!isVisible || last < 1) isConnected_ = false;
      return;
    }
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (!isVisible) {
      skip(length);
      return;
    }
    skip(length * first);
    const double visible = length * (last - first);
    double done = 0;
    do {
      const double step = std::min(left_, visible - done);
      if (index_ % 2 == 0) {
        const double end = step > 0 ? done + step : done + kDot * length;
        piece(between(from, to, length > 0 ? first + done / length : 0),
              between(from, to, length > 0 ? first + end / length : 1));
      }
      done += step;
      left_ -= step;
      if (left_ <= 0) nextDash();
    } while (done < visible);
    if (last < 1) skip(length * (1 - last));
  }

 private:
  void piece(Point from, Point to) {
    if (!isConnected_) to_.moveTo(from);
    to_.lineTo(from, to);
    isConnected_ = true;
  }

  void nextDash() noexcept {
    index_ = (index_ + 1) % dash_.count;
    left_ = dash_.lengths[index_];
    isConnected_ = false;
  }

  // Goes on by a length of which nothing is seen.
  void skip(double length) noexcept {
    if (length <= 0) return;
    isConnected_ = false;
    if (length >= period_) length = std::fmod(length, period_);
    while (length >= left_) {
      length -= left_;
      nextDash();
    }
    left_ -= length;
  }

  Path& to_;
  const DashPattern& dash_;
  double period_ = 0;
  double left_ = 0;  // of the dash or gap that the figure is in
  std::size_t index_ = 0;
  bool isConnected_ = false;
};

// One side of the area: the signed distance of a device point, positive inside.
using Side = double (*)(Point, const Box&);
constexpr Side kSides[4] = {[](Point p, const Box& area) { return p.x - area.left; },
                            [](Point p, const Box& area) { return area.right - p.x; },
                            [](Point p, const Box& area) { return p.y - area.top; },
                            [](Point p, const Box& area) { return area.bottom - p.y; }};

// One step of Sutherland-Hodgman: the polygon without what lies beyond one side.
void keepInside(Points& polygon, const Matrix& matrix, const Box& area, Side side, Points& kept) {
  kept.clear();
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const Point from = polygon[i ? i - 1 : polygon.size() - 1];
    const Point to = polygon[i];
    const double distance1 = side(matrix.apply(from), area);
    const double distance2 = side(matrix.apply(to), area);
    if ((distance1 < 0) != (distance2 < 0)) kept.push_back(between(from, to, distance1 / (distance1 - distance2)));
    if (distance2 >= 0) kept.push_back(to);
  }
  polygon.swap(kept);
}

}  // namespace

Path clipStroke(const Path& path, const Matrix& matrix, const Box& area, const DashPattern& dash) {
  Path clipped;
  StrokePieces pieces(clipped, dash);
  eachFigure(path, matrix, area, [&](Points& points, bool isClosed) {
    const auto hidden = std::find_if(points.begin(), points.end(), [&](Point point) {
      const Point p = matrix.apply(point);
      return p.x < area.left || p.x > area.right || p.y < area.top || p.y > area.bottom;
    });
    const bool isWhole = hidden == points.end();
    const bool isRing = isClosed && !dash.count;
    // A ring that is cut begins where nothing is seen, so that no join is lost.
    const std::size_t start = isRing && !isWhole ? static_cast<std::size_t>(hidden - points.begin()) : 0;
    const std::size_t segments = points.size() - (isClosed && !(isRing && isWhole) ? 0 : 1);
    pieces.startFigure();
    for (std::size_t i = 0; i < segments; ++i) {
      const Point from = points[(start + i) % points.size()];
      const Point to = points[(start + i + 1) % points.size()];
      double first;
      double last;
      const bool isVisible = visiblePart(matrix.apply(from), matrix.apply(to), area, first, last);
      pieces.segment(from, to, first, last, isVisible);
    }
    if (isRing && isWhole) clipped.close();
  });
  return clipped;
}

Path clipFill(const Path& path, const Matrix& matrix, const Box& area) {
  Path clipped;
  Points kept;
  eachFigure(path, matrix, area, [&](Points& polygon, bool) {
    for (const Side side : kSides) keepInside(polygon, matrix, area, side, kept);
    if (polygon.size() < 3) return;
    clipped.moveTo(polygon.front());
    for (std::size_t i = 1; i < polygon.size(); ++i) clipped.lineTo(polygon[i - 1], polygon[i]);
    clipped.close();
  });
  return clipped;
}

}  // namespace corvix
