// Moves, lines, curves and paths: drawn at once, or added to the path under construction.
#include "graphics/contexts/DrawingContext_p.h"
#include "graphics/quality/Quality.h"

namespace corvix {

namespace {

constexpr double kRoom = 4096;          // pixels around the output that are left to the device's own clipping
constexpr double kWidestPen = 1 << 22;  // pixels
constexpr double kFinestDash = 0.05;    // pixels from dash to dash; finer ones cannot be told from a solid line

bool contains(const Box& outer, const Box& inner) noexcept {
  return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
         inner.bottom <= outer.bottom;
}

Point asPoint(i32 x, i32 y) noexcept { return {static_cast<double>(x), static_cast<double>(y)}; }

}  // namespace

Box DrawingContext::roomAround(double penPixels) const noexcept {
  const double room = kRoom + penPixels;
  return {-room, -room, std::max(width_, 0.0) + room, std::max(height_, 0.0) + room};
}

template <class Out>
bool DrawingContext::fitStroke(const Path& path, Out out) {
  const Matrix matrix = fullTransform();
  const double pen = line_.width * penScale();
  Box box;
  if (!path.bounds(matrix, box) || !(pen <= kWidestPen)) return false;
  const double miter = line_.join == kJoinMiter ? std::min(std::max(line_.miterLimit, 1.0), 64.0) : 1.0;
  const Box room = roomAround(pen * miter);
  const bool isFar = quality().softwareClipping.load(std::memory_order_relaxed) && !contains(room, box);
  const double greatest = greatestCoordinate();
  if (!isFar && !contains({-greatest, -greatest, greatest, greatest}, box)) return false;
  const bool isDashed = line_.isDashed && !drawsThinLinesOnly();
  if (!isFar && !(isDashed && cutsDashes())) return out(path, false);
  return withinMemory([&] {
    DashPattern dash;
    std::vector<double> lengths;
    if (isDashed) {
      lengths.assign(line_.dashes.begin(), line_.dashes.end());
      if (lengths.size() % 2) lengths.insert(lengths.end(), line_.dashes.begin(), line_.dashes.end());
      double period = 0;
      for (const double length : lengths) period += length;
      if (period * penScale() >= kFinestDash) dash = {lengths.data(), lengths.size(), line_.dashPhase};
    }
    const Path cut = corvix::clipStroke(path, matrix, room, dash);
    return cut.empty() || out(cut, isDashed);
  });
}

template <class Out>
bool DrawingContext::fitFill(const Path& path, Out out) {
  const Matrix matrix = fullTransform();
  Box box;
  if (!path.bounds(matrix, box)) return false;
  const Box room = roomAround(0);
  const double greatest = greatestCoordinate();
  if (!quality().softwareClipping.load(std::memory_order_relaxed)) {
    return contains({-greatest, -greatest, greatest, greatest}, box) && out(path);
  }
  if (contains(room, box)) return out(path);
  return withinMemory([&] { return out(clipFill(path, matrix, room)); });
}

bool DrawingContext::strokeFitted(const Path& path) {
  return fitStroke(path, [this](const Path& fit, bool isCut) { return strokeOut(fit, isCut); });
}

bool DrawingContext::fillFitted(const Path& path) {
  return fitFill(path, [this](const Path& fit) { return fit.empty() || fillOut(fit); });
}

bool DrawingContext::moveTo(double x, double y) {
  if (!std::isfinite(x) || !std::isfinite(y)) return false;
  current_ = {x, y};
  return !isPathOpen_ || withinMemory([&] {
    path_.moveTo(current_);
    return true;
  });
}

bool DrawingContext::moveToPixel(i32 x, i32 y) {
  Point p = asPoint(x, y);
  return deviceToUser(&p, 1) && moveTo(p.x, p.y);
}

bool DrawingContext::lineTo(double x, double y) {
  const Point to = {x, y};
  if (!isFinite(to)) return false;
  if (isPathOpen_) {
    if (!withinMemory([&] {
          path_.lineTo(current_, to);
          return true;
        })) {
      return false;
    }
    current_ = to;
    return true;
  }
  if (!line(current_.x, current_.y, x, y)) return false;
  current_ = to;
  return true;
}

bool DrawingContext::lineToPixel(i32 x, i32 y) {
  Point p = asPoint(x, y);
  return deviceToUser(&p, 1) && lineTo(p.x, p.y);
}

bool DrawingContext::curveTo(double x1, double y1, double x2, double y2, double x, double y) {
  const Point points[3] = {{x1, y1}, {x2, y2}, {x, y}};
  return curvesTo(points, 3);
}

bool DrawingContext::curveToPixel(i32 x1, i32 y1, i32 x2, i32 y2, i32 x, i32 y) {
  Point points[3] = {asPoint(x1, y1), asPoint(x2, y2), asPoint(x, y)};
  return deviceToUser(points, 3) && curvesTo(points, 3);
}

bool DrawingContext::curvesTo(const Point* points, i32 count) {
  if (!canDraw() || count <= 0 || count % 3 || !points) return false;
  for (i32 i = 0; i < count; ++i) {
    if (!isFinite(points[i])) return false;
  }
  return withinMemory([&] {
    Path curves;
    Path& to = isPathOpen_ ? path_ : curves;
    Point from = current_;
    for (i32 i = 0; i < count; i += 3) {
      to.curveTo(from, points[i], points[i + 1], points[i + 2]);
      from = points[i + 2];
    }
    if (!isPathOpen_ && !strokeFitted(curves)) return false;
    current_ = from;
    return true;
  });
}

bool DrawingContext::line(double x1, double y1, double x2, double y2) {
  const Point ends[2] = {{x1, y1}, {x2, y2}};
  return lines(ends, 2);
}

bool DrawingContext::linePixel(i32 x1, i32 y1, i32 x2, i32 y2) {
  Point ends[2] = {asPoint(x1, y1), asPoint(x2, y2)};
  return deviceToUser(ends, 2) && lines(ends, 2);
}

bool DrawingContext::lines(const Point* points, i32 count) {
  if (!canDraw() || count <= 0 || count % 2 || !points) return false;
  const Matrix matrix = fullTransform();
  const Box room = roomAround(0);
  const bool isPlain = !isPathOpen_ && !(line_.isDashed && cutsDashes()) && line_.width * penScale() < kRoom;
  bool isDrawn = true;
  for (i32 i = 0; i < count; i += 2) {
    const Point from = points[i];
    const Point to = points[i + 1];
    const Point a = matrix.apply(from);
    const Point b = matrix.apply(to);
    if (isPlain && contains(room, {a.x, a.y, a.x, a.y}) && contains(room, {b.x, b.y, b.x, b.y})) {
      isDrawn = lineOut(from, to) && isDrawn;
      continue;
    }
    isDrawn = isFinite(from) && isFinite(to) && withinMemory([&] {
                Path lone;
                Path& path = isPathOpen_ ? path_ : lone;
                path.moveTo(from);
                path.lineTo(from, to);
                return isPathOpen_ || strokeFitted(lone);
              }) &&
              isDrawn;
  }
  return isDrawn;
}

bool DrawingContext::strokePolyline(const Point* points, i32 count) {
  if (!canDraw() || count < 2 || !points) return false;
  return withinMemory([&] {
    Path polyline;
    polyline.moveTo(points[0]);
    for (i32 i = 1; i < count; ++i) polyline.lineTo(points[i - 1], points[i]);
    return strokeFitted(polyline);
  });
}

bool DrawingContext::rectangle(double x, double y, double width, double height) {
  if (!canDraw() || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  return withinMemory([&] {
    Path lone;
    Path& path = isPathOpen_ ? path_ : lone;
    path.rectangle(x, y, width, height);
    return isPathOpen_ || strokeFitted(lone);
  });
}

bool DrawingContext::drawPath(PathPaint paint) {
  if (!canDraw() || path_.empty()) return false;
  const bool isFilled = paint == PathPaint::Stroke || fillFitted(path_);
  return (paint == PathPaint::Fill || strokeFitted(path_)) && isFilled;
}

bool DrawingContext::clipPath() {
  return canDraw() && !path_.empty() && fitFill(path_, [this](const Path& fit) { return clipOut(fit); });
}

bool DrawingContext::clipStroke() {
  return canDraw() && !path_.empty() &&
         fitStroke(path_, [this](const Path& fit, bool isCut) { return clipStrokeOut(fit, isCut); });
}

bool DrawingContext::clipPolygon(const Point* points, i32 count) {
  if (!canDraw() || count < 3 || !points) return false;
  return withinMemory([&] {
    Path polygon;
    polygon.moveTo(points[0]);
    for (i32 i = 1; i < count; ++i) polygon.lineTo(points[i - 1], points[i]);
    polygon.close();
    return fitFill(polygon, [this](const Path& fit) { return clipOut(fit); });
  });
}

bool DrawingContext::beginPath() {
  path_.clear();
  isPathOpen_ = true;
  return true;
}

bool DrawingContext::closePath() {
  if (!isPathOpen_ || !path_.isOpen()) return false;
  return withinMemory([&] {
    path_.close();
    current_ = path_.figureStart();
    return true;
  });
}

bool DrawingContext::flattenPath() {
  Box box;
  const Matrix matrix = fullTransform();
  if (path_.empty() || !path_.bounds(matrix, box)) return false;
  return withinMemory([&] {
    path_ = path_.flattened(matrix, 0.25);
    return true;
  });
}

bool DrawingContext::endPath() {
  if (!isPathOpen_) return false;
  path_.clear();
  isPathOpen_ = false;
  return true;
}

}  // namespace corvix
