#include "graphics/path/Path_p.h"

#include <algorithm>
#include <limits>

namespace corvix {

void Path::makeRoom(std::size_t pieces, std::size_t pointsEach) {
  const auto grow = [](auto& list, std::size_t more) {
    if (const std::size_t needed = list.size() + more; needed > list.capacity()) {
      list.reserve(std::max(needed, 2 * list.capacity()));
    }
  };
  // Each may begin a figure.
  grow(points_, pieces * (pointsEach + 1));
  grow(steps_, 2 * pieces);
}

void Path::moveTo(Point to) {
  makeRoom(1, 1);
  points_.push_back(to);
  steps_.push_back(Step::Move);
  figureStart_ = to;
  isOpen_ = false;
}

void Path::startAt(Point from) {
  if (steps_.empty() || steps_.back() == Step::Close) moveTo(from);
  isOpen_ = true;
}

void Path::lineTo(Point from, Point to) {
  makeRoom(1, 1);
  startAt(from);
  points_.push_back(to);
  steps_.push_back(Step::Line);
}

void Path::curveTo(Point from, Point control1, Point control2, Point to) {
  makeRoom(1, 3);
  startAt(from);
  points_.insert(points_.end(), {control1, control2, to});
  steps_.push_back(Step::Curve);
}

void Path::close() {
  if (isOpen_) steps_.push_back(Step::Close);
  isOpen_ = false;
}

void Path::rectangle(double x, double y, double width, double height) {
  makeRoom(5, 1);
  moveTo({x, y});
  lineTo({x, y}, {x + width, y});
  lineTo({x, y}, {x + width, y + height});
  lineTo({x, y}, {x, y + height});
  close();
}

void Path::clear() noexcept {
  points_.clear();
  steps_.clear();
  isOpen_ = false;
}

bool Path::hasPieces() const noexcept {
  return std::any_of(steps_.begin(), steps_.end(), [](Step step) { return step != Step::Move; });
}

bool Path::bounds(const Matrix& matrix, Box& box) const noexcept {
  constexpr double kFar = std::numeric_limits<double>::infinity();
  box = {kFar, kFar, -kFar, -kFar};
  for (const Point& point : points_) {
    const Point p = matrix.apply(point);
    if (!isFinite(p)) return false;
    box = {std::min(box.left, p.x), std::min(box.top, p.y), std::max(box.right, p.x), std::max(box.bottom, p.y)};
  }
  return true;
}

Path Path::flattened(const Matrix& matrix, double tolerance) const {
  struct Sink {
    Path& to;
    const Matrix& matrix;
    double tolerance;
    Point last{};
    Point first{};
    bool move(Point p) {
      to.moveTo(p);
      first = last = p;
      return true;
    }
    bool line(Point p) {
      to.lineTo(last, p);
      last = p;
      return true;
    }
    bool curve(Point p1, Point p2, Point p3) {
      constexpr double kFar = std::numeric_limits<double>::infinity();
      flattenCurve(
          {last, p1, p2, p3}, matrix, {-kFar, -kFar, kFar, kFar}, tolerance, [this](Point p) { line(p); },
          kDeepest - 16);
      return true;
    }
    bool close() {
      to.close();
      last = first;
      return true;
    }
  };
  Path flat;
  replay(Sink{flat, matrix, tolerance});
  return flat;
}

}  // namespace corvix
