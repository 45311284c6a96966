// Stroker: the outlines of lines with caps and joins, as figures.
#pragma once

#include "graphics/contexts/LineState_p.h"
#include "graphics/path/Path_p.h"
#include "plugins/smooth/Figures_p.h"

#include <agg_math_stroke.h>

namespace corvix::smooth {

class Stroker {
 public:
  // In user units, with a pen that is round there.
  // `area` is what may be seen, in device pixels.
  Stroker(const LineState& line, double width, const Matrix& toDevice, const Box& area, Figures& to);

  // Throws std::bad_alloc.
  void stroke(const Path& path) {
    path.replay(*this);
    finish(false);
  }

  // Of `Path::replay`.
  bool move(Point p);
  bool line(Point p);
  bool curve(Point p1, Point p2, Point p3);
  bool close();

 private:
  struct Spot {
    Spot(double atX, double atY) noexcept : x(atX), y(atY) {}
    double x;
    double y;
  };
  // Where Anti-Grain Geometry puts the points of one outline.
  struct Outline {
    using value_type = Spot;
    const Matrix& matrix;
    Figures& to;
    bool isBegun = false;

    void remove_all() const noexcept {}
    void add(const Spot& spot) {
      const Point p = matrix.apply({spot.x, spot.y});
      isBegun ? to.lineTo(p) : to.moveTo(p);
      isBegun = true;
    }
  };

  void finish(bool isClosed);
  void join(Outline& outline, std::size_t from, std::size_t at, std::size_t to);

  const Matrix& matrix_;
  Figures& to_;
  Box area_;
  double tolerance_;
  double closest_;  // points nearer than that are one
  agg::math_stroke<Outline> math_;
  HeapVector<agg::vertex_dist> points_;
  Point last_ = {0, 0};
};

}  // namespace corvix::smooth
