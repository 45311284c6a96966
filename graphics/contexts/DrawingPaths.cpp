// Moves, lines, curves and paths: drawn at once, or added to the path under construction.
#include "graphics/contexts/DrawingContext_p.h"
#include "graphics/quality/Quality_p.h"

#include <utility>

namespace corvix {

namespace {

constexpr double kRoom = 4096;           // pixels around the output that are left to the device's own clipping
constexpr double kWidestPen = 1 << 22;   // pixels
constexpr double kFinestDash = 1;        // pixels from dash to dash; finer ones cannot be told from a solid line
constexpr double kMostDashes = 1 << 18;  // of one stroke; more than that fill a page

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

bool DrawingContext::drawsDashes() const noexcept {
  return line_.isDashed && !drawsThinLinesOnly() && line_.dashPeriod * penScale() >= kFinestDash;
}

// As many as may be seen: of each line no more than crosses the room around the output.
bool DrawingContext::drawsDashes(const Path& path) const noexcept {
  if (!drawsDashes()) return false;
  const Box room = roomAround(0);
  const double longest = std::hypot(room.right - room.left, room.bottom - room.top);
  const Matrix matrix = fullTransform();
  double length = 0;
  Point last{};
  Point start{};
  const auto addLine = [&](Point to) {
    length += std::min(std::hypot(to.x - last.x, to.y - last.y), longest);
    last = to;
    return true;
  };
  struct Sink {
    decltype(addLine)& add;
    const Matrix& matrix;
    Point& last;
    Point& start;
    bool move(Point p) { return last = start = matrix.apply(p), true; }
    bool line(Point p) { return add(matrix.apply(p)); }
    bool curve(Point p1, Point p2, Point p3) { return line(p1) && line(p2) && line(p3); }
    bool close() { return add(start); }
  };
  path.replay(Sink{addLine, matrix, last, start});
  const std::size_t dashes = line_.dashes.size() / 2 + 1;  // of a period
  return length / (line_.dashPeriod * penScale()) * static_cast<double>(dashes) <= kMostDashes;
}

bool DrawingContext::fitsNumbers(const Path& path, const Box& onDevice) const noexcept {
  const double greatest = greatestCoordinate();
  const Box numbers = {-greatest, -greatest, greatest, greatest};
  Box own = {onDevice.left - origin_.x, onDevice.top - origin_.y, onDevice.right - origin_.x,
             onDevice.bottom - origin_.y};
  if (!transform_.isIdentity() && !path.bounds({}, own)) return false;
  return contains(numbers, onDevice) && contains(numbers, own);
}

bool DrawingContext::fitStroke(const Path& path, Fit& fit) const {
  const Matrix matrix = fullTransform();
  const double pen = line_.width * penScale();
  Box box;
  if (!path.bounds(matrix, box) || !(pen <= kWidestPen)) return false;
  const double miter = line_.join == kJoinMiter ? std::min(std::max(line_.miterLimit, 1.0), 64.0) : 1.0;
  const Box room = roomAround(pen * miter);
  const bool isFar = quality().softwareClipping.load(std::memory_order_relaxed) && !contains(room, box);
  const bool isDashed = drawsDashes(path);
  if (!isFar && !(isDashed && cutsDashes())) {
    fit.whole = &path;
    fit.isCut = !isDashed;
    return fitsNumbers(path, box);
  }
  DashPattern dash;
  std::vector<double> lengths;
  if (isDashed) {
    lengths.assign(line_.dashes.begin(), line_.dashes.end());
    if (lengths.size() % 2) lengths.insert(lengths.end(), line_.dashes.begin(), line_.dashes.end());
    dash = {lengths.data(), lengths.size(), line_.dashPhase};
  }
  fit.part = corvix::clipStroke(path, matrix, room, dash);
  fit.isCut = true;
  return fit.part.empty() || (fit.part.bounds(matrix, box) && fitsNumbers(fit.part, box));
}

bool DrawingContext::fitFill(const Path& path, Fit& fit) const {
  const Matrix matrix = fullTransform();
  Box box;
  if (!path.bounds(matrix, box)) return false;
  const Box room = roomAround(0);
  if (!quality().softwareClipping.load(std::memory_order_relaxed) || contains(room, box)) {
    fit.whole = &path;
    return fitsNumbers(path, box);
  }
  fit.part = clipFill(path, matrix, room);
  return fit.part.empty() || (fit.part.bounds(matrix, box) && fitsNumbers(fit.part, box));
}

bool DrawingContext::strokeFitted(const Path& path) {
  Fit fit;
  if (!fitStroke(path, fit)) return false;
  return isSingular_ || !fit.path().hasPieces() || strokeOut(fit.path(), fit.isCut);
}

bool DrawingContext::fillFitted(const Path& path) {
  Fit fit;
  if (!fitFill(path, fit)) return false;
  return isSingular_ || !fit.path().hasPieces() || fillOut(fit.path());
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
  if (!(isPathOpen_ || canDraw()) || count <= 0 || count % 3 || !points) return false;
  if (!std::all_of(points, points + count, isFinite)) return false;
  return withinMemory([&] {
    Path curves;
    Path& to = isPathOpen_ ? path_ : curves;
    to.makeRoom(static_cast<std::size_t>(count / 3), 3);
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
  if (count <= 0 || count % 2 || !points) return false;
  if (isPathOpen_) return addLines(points, count);
  if (!canDraw()) return false;
  if (drawsDashes()) return dashedLines(points, count);
  const Matrix matrix = fullTransform();
  const Box room = roomAround(0);
  const double greatest = greatestCoordinate();
  const Box numbers = {-greatest, -greatest, greatest, greatest};
  const bool isPlain = line_.width * penScale() < kRoom;
  const auto isNear = [&](Point p) {
    const Point device = matrix.apply(p);
    return contains(room, {device.x, device.y, device.x, device.y}) && contains(numbers, {p.x, p.y, p.x, p.y});
  };
  // All that can be refused is, before the first is drawn.
  return withinMemory([&] {
    std::vector<Fit, HeapAllocator<Fit>> others;
    for (i32 i = 0; i < count; i += 2) {
      if (isPlain && isNear(points[i]) && isNear(points[i + 1])) continue;
      Path line;
      line.moveTo(points[i]);
      line.lineTo(points[i], points[i + 1]);
      Fit fit;
      if (!isFinite(points[i]) || !isFinite(points[i + 1]) || !fitStroke(line, fit)) return false;
      if (std::exchange(fit.whole, nullptr)) fit.part = std::move(line);
      others.push_back(std::move(fit));
    }
    if (isSingular_) return true;
    if (!readyToStroke(true)) return false;
    auto other = others.begin();
    bool isDrawn = true;
    for (i32 i = 0; i < count; i += 2) {
      if (isPlain && isNear(points[i]) && isNear(points[i + 1])) {
        isDrawn = lineOut(points[i], points[i + 1]) && isDrawn;
        continue;
      }
      isDrawn = (!other->path().hasPieces() || strokeOut(other->path(), other->isCut)) && isDrawn;
      ++other;
    }
    return isDrawn;
  });
}

bool DrawingContext::dashedLines(const Point* points, i32 count) {
  return withinMemory([&] {
    Path path;
    path.makeRoom(static_cast<std::size_t>(count), 1);
    for (i32 i = 0; i < count; i += 2) {
      path.moveTo(points[i]);
      path.lineTo(points[i], points[i + 1]);
    }
    return strokeFitted(path);
  });
}

bool DrawingContext::addLines(const Point* points, i32 count) noexcept {
  if (!std::all_of(points, points + count, isFinite)) return false;
  return withinMemory([&] {
    path_.makeRoom(static_cast<std::size_t>(count), 1);
    for (i32 i = 0; i < count; i += 2) {
      path_.moveTo(points[i]);
      path_.lineTo(points[i], points[i + 1]);
    }
    current_ = points[count - 1];
    return true;
  });
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
  if (!(isPathOpen_ || canDraw()) || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  return withinMemory([&] {
    Path lone;
    Path& path = isPathOpen_ ? path_ : lone;
    path.rectangle(x, y, width, height);
    if (!isPathOpen_) return strokeFitted(lone);
    current_ = {x, y};
    return true;
  });
}

bool DrawingContext::drawPath(PathPaint paint) {
  if (!canDraw() || path_.empty()) return false;
  return withinMemory([&] {
    Fit inside;
    Fit outline;
    if ((paint != PathPaint::Stroke && !fitFill(path_, inside)) ||
        (paint != PathPaint::Fill && !fitStroke(path_, outline))) {
      return false;
    }
    const bool isFilled = !isSingular_ && paint != PathPaint::Stroke && inside.path().hasPieces();
    const bool isStroked = !isSingular_ && paint != PathPaint::Fill && outline.path().hasPieces();
    if ((isFilled && !readyToFill()) || (isStroked && !readyToStroke(outline.isCut))) return false;
    const bool isDone = !isFilled || fillOut(inside.path());
    return (!isStroked || strokeOut(outline.path(), outline.isCut)) && isDone;
  });
}

bool DrawingContext::clipTo(const Path& path) {
  Fit fit;
  return fitFill(path, fit) && clipOut(isSingular_ || !fit.path().hasPieces() ? Path() : fit.path());
}

bool DrawingContext::clipPath() {
  return canDraw() && !path_.empty() && withinMemory([&] { return clipTo(path_); });
}

bool DrawingContext::clipStroke() {
  return canDraw() && !path_.empty() && withinMemory([&] {
           Fit fit;
           if (!fitStroke(path_, fit)) return false;
           if (isSingular_ || !fit.path().hasPieces()) return clipOut(Path());
           return clipStrokeOut(fit.path(), fit.isCut);
         });
}

bool DrawingContext::clipPolygon(const Point* points, i32 count) {
  if (!canDraw() || count < 3 || !points) return false;
  return withinMemory([&] {
    Path polygon;
    polygon.moveTo(points[0]);
    for (i32 i = 1; i < count; ++i) polygon.lineTo(points[i - 1], points[i]);
    polygon.close();
    return clipTo(polygon);
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
