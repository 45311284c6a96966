// Path: figures of lines and curves in double precision, as a caller built them, before any device sees them.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "graphics/Geometry.h"

#include <vector>

namespace corvix {

class Path {
 public:
  enum class Step : u8 {
    Move,
    Line,
    Curve,  // three points
    Close,  // none; the figure's first point is the current one again
  };

  // These throw std::bad_alloc, with the path as it was. A line or curve without a figure begins one at `from`.
  void moveTo(Point to);
  void lineTo(Point from, Point to);
  void curveTo(Point from, Point control1, Point control2, Point to);
  void close();
  void rectangle(double x, double y, double width, double height);

  // So that as many more lines, or curves of three points each, cannot throw. Throws std::bad_alloc.
  void makeRoom(std::size_t pieces, std::size_t pointsEach);

  void clear() noexcept;
  bool empty() const noexcept { return steps_.empty(); }
  bool isOpen() const noexcept { return isOpen_; }  // a figure that can be closed
  bool hasPieces() const noexcept;                  // more than moves
  std::size_t pointCount() const noexcept { return points_.size(); }
  Point figureStart() const noexcept { return figureStart_; }

  // Calls move(p), line(p), curve(p1, p2, p3) and close() in order, until one answers false.
  template <class Sink>
  bool replay(Sink&& sink) const {
    const Point* p = points_.data();
    for (const Step step : steps_) {
      bool goOn = true;
      switch (step) {
        case Step::Move:
          goOn = sink.move(*p++);
          break;
        case Step::Line:
          goOn = sink.line(*p++);
          break;
        case Step::Curve:
          goOn = sink.curve(p[0], p[1], p[2]);
          p += 3;
          break;
        case Step::Close:
          goOn = sink.close();
          break;
      }
      if (!goOn) return false;
    }
    return true;
  }

  // Around all points, control points included, after `matrix`; false when one of them is no finite number.
  bool bounds(const Matrix& matrix, Box& box) const noexcept;

  // Curves become lines within `tolerance` of them, as measured after `matrix`.
  Path flattened(const Matrix& matrix, double tolerance) const;

 private:
  void startAt(Point from);

  std::vector<Point, HeapAllocator<Point>> points_;
  std::vector<Step, HeapAllocator<Step>> steps_;
  Point figureStart_ = {0, 0};
  bool isOpen_ = false;
};

constexpr int kDeepest = 40;  // halvings of one curve

// De Casteljau: the points of a curve behind its first, calling line(p), within `tolerance` after `matrix`. What lies
// wholly beyond one side of `area` becomes one line.
template <class Line>
void flattenCurve(const Point (&curve)[4], const Matrix& matrix, const Box& area, double tolerance, Line&& line,
                  int depth = 0) {
  Point device[4];
  for (int i = 0; i < 4; ++i) device[i] = matrix.apply(curve[i]);
  const auto beyond = [&](auto outside) {
    return outside(device[0]) && outside(device[1]) && outside(device[2]) && outside(device[3]);
  };
  const bool isInvisible =
      beyond([&](Point p) { return p.x < area.left; }) || beyond([&](Point p) { return p.x > area.right; }) ||
      beyond([&](Point p) { return p.y < area.top; }) || beyond([&](Point p) { return p.y > area.bottom; });
  // The curve is nowhere farther from its chord than three quarters of what its second differences span.
  const double ux = std::abs(device[0].x - 2 * device[1].x + device[2].x);
  const double uy = std::abs(device[0].y - 2 * device[1].y + device[2].y);
  const double vx = std::abs(device[1].x - 2 * device[2].x + device[3].x);
  const double vy = std::abs(device[1].y - 2 * device[2].y + device[3].y);
  const double x = ux > vx ? ux : vx;
  const double y = uy > vy ? uy : vy;
  const bool isFar = 0.75 * 0.75 * (x * x + y * y) > tolerance * tolerance;
  if (isInvisible || depth >= kDeepest || !isFar) {
    line(curve[3]);
    return;
  }
  const auto middle = [](Point p, Point q) { return Point{(p.x + q.x) / 2, (p.y + q.y) / 2}; };
  const Point p01 = middle(curve[0], curve[1]);
  const Point p12 = middle(curve[1], curve[2]);
  const Point p23 = middle(curve[2], curve[3]);
  const Point p012 = middle(p01, p12);
  const Point p123 = middle(p12, p23);
  const Point center = middle(p012, p123);
  flattenCurve({curve[0], p01, p012, center}, matrix, area, tolerance, line, depth + 1);
  flattenCurve({center, p123, p23, curve[3]}, matrix, area, tolerance, line, depth + 1);
}

}  // namespace corvix
