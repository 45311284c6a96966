// Strokes and fills of a GDI+ context.
#include "graphics/contexts/AGDC_p.h"
#include "graphics/quality/Quality_p.h"

#include <cfloat>

namespace corvix {

using gdiplus::flat;

namespace {

bool fits(Point p, Gdiplus::PointF& single) noexcept {
  if (!(std::abs(p.x) <= double{FLT_MAX} && std::abs(p.y) <= double{FLT_MAX})) return false;
  single.X = static_cast<float>(p.x);
  single.Y = static_cast<float>(p.y);
  return true;
}

bool isOk(Gdiplus::GpStatus status) noexcept { return status == Gdiplus::Ok; }

}  // namespace

// Reused: a path of GDI+'s costs as much as a short line.
Gdiplus::GpPath* AGDC::emptyPath() noexcept {
  if (!native_) {
    native_ = gdiplus::makeWhole<gdiplus::OwnedPath>(
        [](Gdiplus::GpPath** made) { return flat().GdipCreatePath(Gdiplus::FillModeAlternate, made); });
    return native_ ? native_.get()->native : nullptr;
  }
  Gdiplus::GpPath* const path = native_.get()->native;
  return native_.get()->keep(flat().GdipResetPath(path)) ? path : nullptr;
}

// Into `native_`, through `matrix` if there is one. Long runs of lines go by way of the work buffer.
bool AGDC::tracePath(const Path& path, const Matrix* matrix) noexcept {
  struct Sink {
    Gdiplus::GpPath* native;
    const Matrix* matrix;
    WorkBuffer* buffer;  // null: one line at a time
    Gdiplus::PointF last{};

    bool place(Point p, Gdiplus::PointF& single) const noexcept { return fits(matrix ? matrix->apply(p) : p, single); }

    bool flush() noexcept {
      if (!buffer || !buffer->count) return true;
      const auto count = static_cast<INT>(std::exchange(buffer->count, 0));
      return isOk(flat().GdipAddPathLine2(native, buffer->points, count));
    }
    bool move(Point p) noexcept {
      if (!flush() || !place(p, last) || !isOk(flat().GdipStartPathFigure(native))) return false;
      if (buffer) buffer->points[buffer->count++] = last;
      return true;
    }
    bool line(Point p) noexcept {
      Gdiplus::PointF to;
      if (!place(p, to)) return false;
      const Gdiplus::PointF from = std::exchange(last, to);
      if (!buffer) return isOk(flat().GdipAddPathLine(native, from.X, from.Y, to.X, to.Y));
      buffer->points[buffer->count++] = to;
      return buffer->count < std::size(buffer->points) || flush();
    }
    bool curve(Point p1, Point p2, Point p3) noexcept {
      Gdiplus::PointF c1;
      Gdiplus::PointF c2;
      Gdiplus::PointF to;
      if (buffer && buffer->count == 1) buffer->count = 0;  // the curve brings its first point along
      if (!flush() || !place(p1, c1) || !place(p2, c2) || !place(p3, to)) return false;
      const Gdiplus::PointF from = std::exchange(last, to);
      return isOk(flat().GdipAddPathBezier(native, from.X, from.Y, c1.X, c1.Y, c2.X, c2.Y, to.X, to.Y));
    }
    bool close() noexcept { return flush() && isOk(flat().GdipClosePathFigure(native)); }
  };
  Gdiplus::GpPath* const native = emptyPath();
  if (!native) return false;
  constexpr std::size_t kFew = 8;  // points that go faster one by one
  const bool isLong = work_ && path.pointCount() > kFew;
  if (isLong) work_->count = 0;
  Sink sink{native, matrix, isLong ? work_.get() : nullptr};
  return path.replay(sink) && sink.flush();
}

bool AGDC::strokeOut(const Path& path, bool isCut) {
  if (!tracePath(path, nullptr) || !prepare() || !useWorld(World::User) || !preparePen(isCut)) return false;
  auto& graphics = *graphics_.get();
  return graphics.keep(flat().GdipDrawPath(graphics.native, pen_.get()->native, native_.get()->native));
}

bool AGDC::lineOut(Point from, Point to) {
  Gdiplus::PointF a;
  Gdiplus::PointF b;
  Gdiplus::GpPath* const path = emptyPath();
  if (!path || !fits(from, a) || !fits(to, b) || !isOk(flat().GdipAddPathLine(path, a.X, a.Y, b.X, b.Y)) ||
      !prepare() || !useWorld(World::User) || !preparePen(false)) {
    return false;
  }
  auto& graphics = *graphics_.get();
  return graphics.keep(flat().GdipDrawPath(graphics.native, pen_.get()->native, path));
}

bool AGDC::fillOut(const Path& path) {
  if (!brush_ || !brush_.get()->native || !tracePath(path, transform_.isIdentity() ? nullptr : &transform_) ||
      !prepare()) {
    return false;
  }
  const auto mode = fillRule_ == FillRule::Winding ? Gdiplus::FillModeWinding : Gdiplus::FillModeAlternate;
  native_.get()->keep(flat().GdipSetPathFillMode(native_.get()->native, mode));
  auto& graphics = *graphics_.get();
  return graphics.keep(flat().GdipFillPath(graphics.native, brush_.get()->native, native_.get()->native));
}

bool AGDC::drawRectangle(double x, double y, double width, double height) {
  const Box room = roomAround(0);
  const bool isNear = x + origin_.x > room.left && y + origin_.y > room.top && x + width + origin_.x < room.right &&
                      y + height + origin_.y < room.bottom && width >= 0 && height >= 0;
  if (!canDraw() || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  if (!isNear || !transform_.isIdentity() || (drawsDashes() && cutsDashes())) {
    return withinMemory([&] {
      Path path;
      path.rectangle(x, y, width, height);
      return strokeFitted(path);
    });
  }
  if (!prepare() || !preparePen(false)) return false;
  auto& graphics = *graphics_.get();
  return graphics.keep(flat().GdipDrawRectangle(graphics.native, pen_.get()->native, static_cast<float>(x),
                                                static_cast<float>(y), static_cast<float>(width),
                                                static_cast<float>(height)));
}

bool AGDC::fillRect(double x, double y, double width, double height) {
  if (!canDraw() || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  const Box room = roomAround(0);
  const bool isNear = x + origin_.x > room.left && y + origin_.y > room.top && x + width + origin_.x < room.right &&
                      y + height + origin_.y < room.bottom && width >= 0 && height >= 0;
  if (!isNear || !transform_.isIdentity()) {
    return withinMemory([&] {
      Path path;
      path.rectangle(x, y, width, height);
      return fillFitted(path);
    });
  }
  Gdiplus::GpPath* const path = emptyPath();
  if (!path || !brush_ || !brush_.get()->native || !prepare() ||
      !isOk(flat().GdipAddPathRectangle(path, static_cast<float>(x), static_cast<float>(y), static_cast<float>(width),
                                        static_cast<float>(height)))) {
    return false;
  }
  auto& graphics = *graphics_.get();
  return graphics.keep(flat().GdipFillPath(graphics.native, brush_.get()->native, path));
}

// The whole output in device pixels, whatever the clip and the origin.
bool AGDC::clear() {
  if (!prepare()) return false;
  auto& graphics = *graphics_.get();
  graphics.keep(flat().GdipResetClip(graphics.native));
  graphics.keep(flat().GdipResetWorldTransform(graphics.native));
  isPrepared_ = false;
  backgroundColor_ = kWhite;
  const auto white = gdiplus::makeWhole<gdiplus::OwnedBrush>(
      [](Gdiplus::GpSolidFill** made) { return flat().GdipCreateSolidFill(kWhite, made); });
  return white && graphics.keep(flat().GdipFillRectangle(graphics.native, white.get()->native, 0, 0,
                                                         static_cast<float>(std::ceil(width_)),
                                                         static_cast<float>(std::ceil(height_))));
}

}  // namespace corvix
