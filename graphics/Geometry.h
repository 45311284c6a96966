// Points, boxes and affine matrices in double precision. x grows to the right, y downwards.
#pragma once

#include "core/baselib/Api.h"

#include <cmath>

namespace corvix {

struct Point {
  double x;
  double y;
};

// Half open: right and bottom do not belong to it.
struct Box {
  double left;
  double top;
  double right;
  double bottom;
};

struct PixelBox {
  i32 left;
  i32 top;
  i32 right;
  i32 bottom;
};

// x' = a*x + c*y + e, y' = b*x + d*y + f
struct Matrix {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;
  double e = 0;
  double f = 0;

  Point apply(Point p) const noexcept { return {a * p.x + c * p.y + e, b * p.x + d * p.y + f}; }
  double determinant() const noexcept { return a * d - b * c; }
  bool canTurnBack() const noexcept { return std::isfinite(determinant()) && determinant() != 0; }
  bool isIdentity() const noexcept { return a == 1 && b == 0 && c == 0 && d == 1 && e == 0 && f == 0; }
  bool isFinite() const noexcept {
    return std::isfinite(a) && std::isfinite(b) && std::isfinite(c) && std::isfinite(d) && std::isfinite(e) &&
           std::isfinite(f);
  }

  // This one first, then `next`.
  Matrix then(const Matrix& next) const noexcept {
    return {next.a * a + next.c * b, next.b * a + next.d * b,          next.a * c + next.c * d,
            next.b * c + next.d * d, next.a * e + next.c * f + next.e, next.b * e + next.d * f + next.f};
  }

  // Only for one that can be turned back.
  Matrix inverse() const noexcept {
    const double det = determinant();
    return {d / det, -b / det, -c / det, a / det, (c * f - d * e) / det, (b * e - a * f) / det};
  }

  static Matrix translation(double x, double y) noexcept { return {1, 0, 0, 1, x, y}; }
  static Matrix scaling(double x, double y) noexcept { return {x, 0, 0, y, 0, 0}; }
  static Matrix rotation(double radians) noexcept {
    return {std::cos(radians), std::sin(radians), -std::sin(radians), std::cos(radians), 0, 0};
  }
};

inline bool isFinite(Point p) noexcept { return std::isfinite(p.x) && std::isfinite(p.y); }

}  // namespace corvix
