// Fills, strokes and text of a smooth context.
#include "graphics/quality/Quality_p.h"
#include "plugins/smooth/SmoothContext_p.h"

namespace corvix::smooth {

namespace {

constexpr double kTolerance = 0.05;  // pixels, of flattened curves

Box boxOf(const PixelBox& box) noexcept {
  return {double{1} * box.left, double{1} * box.top, double{1} * box.right, double{1} * box.bottom};
}

// What `Path::replay` feeds, through a matrix.
struct Tracer {
  Figures& to;
  const Matrix& matrix;
  Box area;
  Point last = {0, 0};
  Point first = {0, 0};

  bool move(Point p) {
    to.moveTo(matrix.apply(p));
    first = last = p;
    return true;
  }
  bool line(Point p) {
    to.lineTo(matrix.apply(p));
    last = p;
    return true;
  }
  bool curve(Point p1, Point p2, Point p3) {
    flattenCurve({last, p1, p2, p3}, matrix, area, kTolerance, [this](Point p) { line(p); });
    return true;
  }
  bool close() {
    to.close();
    to.moveTo(matrix.apply(first));
    last = first;
    return true;
  }
};

}  // namespace

PixelBox SmoothContext::clipBox() const noexcept {
  const Surface to = surface();
  if (!clip_.isNarrow) return to.box;
  i32 x;
  i32 y;
  wholeOrigin(x, y);
  return intersected(to.box, moved(clip_.box, x, y));
}

PlacedMask SmoothContext::placed(const SharedMask& mask) const noexcept {
  PlacedMask result = {mask, 0, 0};
  wholeOrigin(result.x, result.y);
  return result;
}

Painter::How SmoothContext::how(Color color, const SharedPaint& paint) const noexcept {
  Painter::How how;
  how.surface = surface();
  how.clip = clipBox();
  how.masks[0] = placed(clip_.mask);
  how.masks[1] = placed(look_.mask);
  if (look_.mask) how.clip = intersected(how.clip, moved(look_.mask->box(), how.masks[1].x, how.masks[1].y));
  how.opacity = static_cast<u32>(std::lround(look_.opacity * 255));
  how.mode = look_.mode;
  how.pixel = toPixel(color);
  how.source = paint;
  how.origin = origin_;
  return how;
}

void SmoothContext::trace(const Path& path, const PixelBox& clip) {
  const Matrix matrix = fullTransform();
  figures_.clear();
  path.replay(Tracer{figures_, matrix, boxOf(clip)});
}

// The thinnest line is a pixel wide; with smart lines no other is thinner.
double SmoothContext::penWidth() const noexcept {
  const double pixel = 1 / penScale();
  if (isHairline_ || line_.width == 0) return pixel;
  return quality().smartLines.load(std::memory_order_relaxed) ? std::max(line_.width, pixel) : line_.width;
}

void SmoothContext::traceStroke(const Path& path, const PixelBox& clip) {
  const Matrix matrix = fullTransform();
  const double width = penWidth();
  Box area = boxOf(clip);
  const double room = width * std::max(std::hypot(matrix.a, matrix.b), std::hypot(matrix.c, matrix.d)) *
                      std::clamp(line_.miterLimit, 1.0, 64.0);
  area = {area.left - room, area.top - room, area.right + room, area.bottom + room};
  figures_.clear();
  Stroker(line_, width, matrix, area, figures_).stroke(path);
}

// What is only lent goes back to its owner now.
bool SmoothContext::wasCollected(const Painter::How& how) noexcept {
  const bool isLent = how.source && how.source.use_count() == 0;
  return (!isLent && !tiles_.isFull()) || drawTiles();
}

bool SmoothContext::drawTiles() noexcept {
  if (tiles_.isEmpty()) return true;
  const PixelBox box = tiles_.box();
  const bool isDrawn = tiles_.draw();
  if (isDrawn) {
    changed(box);
  } else {
    isTileLost_ = true;
  }
  return isDrawn;
}

bool SmoothContext::beginTiles(i32 threads) {
  if (threads < 1 || threads > kMostTileThreads || tiles_.isOn() || !canDraw()) return false;
  tiles_.begin(threads);
  isTileLost_ = false;
  return true;
}

bool SmoothContext::endTiles() {
  if (!tiles_.isOn()) return false;
  const bool isDrawn = drawTiles() && !isTileLost_;
  tiles_.end();
  return isDrawn;
}

bool SmoothContext::paintFigures(const Painter::How& how, FillRule rule) {
  if (tiles_.isOn() && tiles_.add(how, figures_, rule, isSmooth())) return wasCollected(how);
  drawTiles();
  rasterizer_.take(figures_, how.clip);
  Painter painter(how, rows_);
  rasterizer_.sweep(rule, isSmooth(), painter);
  changed(rasterizer_.rows());
  return true;
}

bool SmoothContext::paintBox(const Painter::How& how, const PixelBox& box) {
  const PixelBox seen = intersected(box, how.clip);
  if (isEmpty(seen)) return true;
  if (tiles_.isOn()) {
    tiles_.add(how, seen);
    return wasCollected(how);
  }
  Painter painter(how, rows_);
  for (i32 y = seen.top; y < seen.bottom; ++y) painter.run(seen.left, y, seen.right - seen.left, 255);
  changed(seen);
  return true;
}

bool SmoothContext::fillOut(const Path& path) {
  if (!prepare()) return false;
  const Painter::How how = this->how(fillColor_, paints_[0]);
  if (isEmpty(how.clip)) return true;
  trace(path, how.clip);
  return paintFigures(how, fillRule_);
}

bool SmoothContext::strokeOut(const Path& path, bool) {
  if (!prepare()) return false;
  const Painter::How how = this->how(strokeColor_, paints_[1]);
  if (isEmpty(how.clip)) return true;
  traceStroke(path, how.clip);
  return paintFigures(how, FillRule::Winding);
}

bool SmoothContext::lineOut(Point from, Point to) {
  Path path;
  path.moveTo(from);
  path.lineTo(from, to);
  return strokeOut(path, false);
}

bool SmoothContext::drawRectangle(double x, double y, double width, double height) {
  if (!canDraw() || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  return withinMemory([&] {
    Path path;
    path.rectangle(x, y, width, height);
    return strokeFitted(path);
  });
}

// Along the axes, and without coverage or on whole pixels.
bool SmoothContext::isOnPixels(double x, double y, double width, double height, PixelBox& box) const noexcept {
  const Matrix m = fullTransform();
  if (m.b != 0 || m.c != 0) return false;
  const Point a = m.apply({x, y});
  const Point b = m.apply({x + width, y + height});
  RECT rect;
  if (!gdi::roundRect(a.x, a.y, b.x, b.y, rect)) return false;
  constexpr double kClose = 1.0 / 512;
  const auto isNear = [](double edge1, double edge2, LONG low, LONG high) {
    return std::abs(std::min(edge1, edge2) - low) < kClose && std::abs(std::max(edge1, edge2) - high) < kClose;
  };
  box = {rect.left, rect.top, rect.right, rect.bottom};
  return !isSmooth() || (isNear(a.x, b.x, rect.left, rect.right) && isNear(a.y, b.y, rect.top, rect.bottom));
}

bool SmoothContext::fillRect(double x, double y, double width, double height) {
  if (!canDraw() || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  return withinMemory([&] {
    PixelBox box;
    if (!isSingular_ && isOnPixels(x, y, width, height, box)) {
      if (!prepare()) return false;
      return paintBox(how(fillColor_, paints_[0]), box);
    }
    Path path;
    path.rectangle(x, y, width, height);
    return fillFitted(path);
  });
}

bool SmoothContext::clear() {
  if (!prepare()) return false;
  drawTiles();
  backgroundColor_ = kWhite;
  const Surface to = surface();
  for (i32 y = to.box.top; y < to.box.bottom; ++y) {
    spans().fill(to.at(to.box.left, y), to.box.right - to.box.left, kWhite);
  }
  changed(to.box);
  return true;
}

bool SmoothContext::patternRectPixel(i32 x, i32 y, i32 width, i32 height, const u8* pattern) {
  RECT rect;
  if (!pattern || !canDraw() ||
      !gdi::roundRect(x + origin_.x, y + origin_.y, x + origin_.x + width, y + origin_.y + height, rect)) {
    return false;
  }
  return withinMemory([&] {
    if (!prepare()) return false;
    const PatternPaint paint(pattern, toPixel(backgroundColor_), toPixel(fillColor_), origin_);
    Painter::How how = this->how(fillColor_, nullptr);
    how.source = lent(paint);
    return paintBox(how, {rect.left, rect.top, rect.right, rect.bottom});
  });
}

bool SmoothContext::patternRect(double x, double y, double width, double height, const u8* pattern) {
  const Point a = transform_.apply({x, y});
  const Point b = transform_.apply({x + width, y + height});
  RECT rect;
  return gdi::roundRect(a.x, a.y, b.x, b.y, rect) &&
         patternRectPixel(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, pattern);
}

// A run of glyphs, on whole pixels.
bool SmoothContext::paintCoverage(const u8* coverage, i32 strideBytes, const PixelBox& place) {
  if (!coverage || isEmpty(place) || !prepare()) return false;
  if (isSingular_) return true;
  return withinMemory([&] {
    i32 x;
    i32 y;
    wholeOrigin(x, y);
    const PixelBox box = moved(place, x, y);
    const Painter::How how = this->how(fillColor_, paints_[0]);
    const PixelBox seen = intersected(box, how.clip);
    if (isEmpty(seen)) return true;
    const u8* covers =
        coverage + static_cast<std::ptrdiff_t>(strideBytes) * (seen.top - box.top) + (seen.left - box.left);
    if (tiles_.isOn()) {
      tiles_.add(how, covers, strideBytes, seen);
      return wasCollected(how);
    }
    Painter painter(how, rows_);
    for (i32 row = seen.top; row < seen.bottom; ++row, covers += strideBytes) {
      painter.many(seen.left, row, seen.right - seen.left, covers);
    }
    changed(seen);
    return true;
  });
}

// By curves of at most a quarter, counter-clockwise from the right.
bool SmoothContext::addEllipse(Path& path, double centerX, double centerY, double radiusX, double radiusY, double start,
                               double sweep) const {
  const double bounds[6] = {centerX, centerY, radiusX, radiusY, start, sweep};
  if (!std::all_of(bounds, bounds + 6, [](double value) { return std::isfinite(value); }) || radiusX < 0 ||
      radiusY < 0) {
    return false;
  }
  const double degree = std::acos(-1.0) / 180;
  sweep = std::clamp(sweep, -360.0, 360.0) * degree;
  const bool isWhole = std::abs(sweep) >= 360 * degree;
  double angle = std::fmod(start, 360) * degree;
  const auto parts = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / (90 * degree) - 1e-9)));
  const double step = sweep / parts;
  const double handle = 4.0 / 3 * std::tan(step / 4);
  const auto at = [&](double a, double along) {
    return Point{centerX + radiusX * (std::cos(a) - along * std::sin(a)),
                 centerY - radiusY * (std::sin(a) + along * std::cos(a))};
  };
  path.moveTo(at(angle, 0));
  for (int i = 0; i < parts; ++i, angle += step) {
    path.curveTo(at(angle, 0), at(angle, handle), at(angle + step, -handle), at(angle + step, 0));
  }
  if (isWhole) path.close();
  return true;
}

bool SmoothContext::arc(double centerX, double centerY, double radiusX, double radiusY, double start, double sweep) {
  return canDraw() && withinMemory([&] {
           Path path;
           return addEllipse(path, centerX, centerY, radiusX, radiusY, start, sweep) &&
                  (sweep == 0 || strokeFitted(path));
         });
}

bool SmoothContext::arcPixel(const PixelBox& box, i32 startX, i32 startY, i32 endX, i32 endY) {
  const double x = (double{1} * box.left + box.right) / 2;
  const double y = (double{1} * box.top + box.bottom) / 2;
  const double radiusX = std::abs(double{1} * box.right - box.left) / 2;
  const double radiusY = std::abs(double{1} * box.bottom - box.top) / 2;
  const auto angle = [&](i32 toX, i32 toY) {
    return std::atan2((y - toY) * radiusX, (toX - x) * radiusY) * 180 / std::acos(-1.0);
  };
  const double start = angle(startX, startY);
  double sweep = angle(endX, endY) - start;
  if (sweep <= 0) sweep += 360;
  return radiusX > 0 && radiusY > 0 && arc(x, y, radiusX, radiusY, start, sweep);
}

bool SmoothContext::ellipse(double centerX, double centerY, double radiusX, double radiusY) {
  return arc(centerX, centerY, radiusX, radiusY, 0, 360);
}

bool SmoothContext::ellipsePixel(const PixelBox& box) {
  return ellipse((double{1} * box.left + box.right) / 2, (double{1} * box.top + box.bottom) / 2,
                 std::abs(double{1} * box.right - box.left) / 2, std::abs(double{1} * box.bottom - box.top) / 2);
}

bool SmoothContext::fillEllipse(double centerX, double centerY, double radiusX, double radiusY) {
  return canDraw() && withinMemory([&] {
           Path path;
           return addEllipse(path, centerX, centerY, radiusX, radiusY, 0, 360) && fillFitted(path);
         });
}

}  // namespace corvix::smooth
