#include "graphics/contexts/PlainContext_p.h"

#include "graphics/quality/Quality_p.h"

namespace corvix {

namespace {

constexpr std::size_t kMostGdiDashes = 16;

DWORD endCap(i32 cap) noexcept {
  return cap == kCapRound ? PS_ENDCAP_ROUND : cap == kCapSquare ? PS_ENDCAP_SQUARE : PS_ENDCAP_FLAT;
}

DWORD joinStyle(i32 join) noexcept {
  return join == kJoinRound ? PS_JOIN_ROUND : join == kJoinBevel ? PS_JOIN_BEVEL : PS_JOIN_MITER;
}

}  // namespace

AGDCPlain::AGDCPlain(DeviceHandle device, double width, double height) : DrawingContext(device, width, height) {
  if (device) takeOver();
}

AGDCPlain::~AGDCPlain() { AGDCPlain::detach(); }

// The device context's own state is kept, and a copy of its clip; `detach` brings it back.
void AGDCPlain::takeOver() noexcept {
  savedState_ = SaveDC(device_);
  baseClip_.reset(CreateRectRgn(0, 0, 0, 0));
  if (GetClipRgn(device_, baseClip_.get()) != 1) baseClip_.reset();
  isPenStale_ = isBrushStale_ = true;
  setOrigin(origin_.x, origin_.y);
}

bool AGDCPlain::take(DeviceHandle device, double width, double height) {
  if (!DrawingContext::take(device, width, height)) return false;
  takeOver();
  return true;
}

bool AGDCPlain::detach() {
  if (!isAttached_) return false;
  if (savedState_) RestoreDC(device_, savedState_);
  savedState_ = 0;
  baseClip_.reset();
  onDevice_.reset();
  clip_.reset();
  saved_.clear();
  penObject_.reset();
  brushObject_.reset();
  isPenStale_ = isBrushStale_ = true;
  return DrawingContext::detach();
}

IAGDC* AGDCPlain::createDetached() { return new AGDCPlain(nullptr, 0, 0); }

bool AGDCPlain::setOrigin(double x, double y) {
  if (!DrawingContext::setOrigin(x, y)) return false;
  if (!isAttached_) return true;
  int left = 0;
  int top = 0;
  gdi::roundPixel(x, left);
  gdi::roundPixel(y, top);
  viewport_ = {left, top};
  SetViewportOrgEx(device_, baseOrigin_.x + left, baseOrigin_.y + top, nullptr);
  applyClip();
  return true;
}

bool AGDCPlain::setDeviceMiterLimit(double limit) {
  return isAttached_ && limit >= 1 && limit <= gdi::kGreatest &&
         SetMiterLimit(device_, static_cast<FLOAT>(limit), nullptr);
}

bool AGDCPlain::moveTo(double x, double y) {
  if (!DrawingContext::moveTo(x, y)) return false;
  int left;
  int top;
  if (isAttached_ && gdi::roundPixel(x, left) && gdi::roundPixel(y, top)) MoveToEx(device_, left, top, nullptr);
  return true;
}

void AGDCPlain::colorsChanged() noexcept { isPenStale_ = isBrushStale_ = true; }

bool AGDCPlain::cutsDashes() const noexcept {
  return line_.dashPhase != 0 || line_.dashes.size() > kMostGdiDashes ||
         std::any_of(line_.dashes.begin(), line_.dashes.end(),
                     [](double length) { return length < 1 || std::abs(length - std::round(length)) > 0.01; });
}

bool AGDCPlain::selectPenKind(PenKind kind) noexcept {
  pen_.kind = kind;
  isPenStale_ = true;
  return !isAttached_ || preparePen(false);
}

bool AGDCPlain::selectPen() { return selectPenKind(PenKind::FromLineState); }
bool AGDCPlain::selectHairlinePen() { return selectPenKind(PenKind::Hairline); }
bool AGDCPlain::selectGeometricPen() { return selectPenKind(PenKind::Geometric); }

// Thin solid lines get a cosmetic pen, which is several times faster, but has no caps and joins.
bool AGDCPlain::preparePen(bool isSolid) noexcept {
  const bool isSmart = quality().smartLines.load(std::memory_order_relaxed);
  const bool isDashed = !isSolid && drawsDashes() && !cutsDashes();
  if (!isPenStale_ && pen_.isSolid == !isDashed && pen_.isSmart == isSmart) return true;
  const bool isHairline = pen_.kind == PenKind::Hairline;
  const auto width = isHairline ? DWORD{1} : static_cast<DWORD>(std::max(1.0, std::floor(line_.width + 0.5)));
  const bool isGeometric = !isHairline && (width > 1 || isDashed || isSmart || pen_.kind == PenKind::Geometric);
  const LOGBRUSH brush = {BS_SOLID, gdi::colorRef(strokeColor_), 0};
  DWORD dashes[kMostGdiDashes] = {};
  const DWORD dashCount = isDashed ? static_cast<DWORD>(line_.dashes.size()) : 0;
  for (DWORD i = 0; i < dashCount; ++i) dashes[i] = static_cast<DWORD>(std::lround(line_.dashes[i]));
  const DWORD style = (isDashed ? PS_USERSTYLE : PS_SOLID) |
                      (isGeometric ? PS_GEOMETRIC | endCap(line_.cap) | joinStyle(line_.join) : PS_COSMETIC);
  gdi::Pen pen(ExtCreatePen(style, width, &brush, dashCount, dashCount ? dashes : nullptr));
  if (!pen || !SelectObject(device_, pen.get())) return false;
  penObject_ = std::move(pen);
  if (isGeometric) SetMiterLimit(device_, static_cast<FLOAT>(std::max(1.0, line_.miterLimit)), nullptr);
  pen_.isSolid = !isDashed;
  pen_.isSmart = isSmart;
  isPenStale_ = false;
  return true;
}

bool AGDCPlain::prepareBrush() noexcept {
  if (!isBrushStale_) return true;
  gdi::Brush brush(CreateSolidBrush(gdi::colorRef(fillColor_)));
  if (!brush || !SelectObject(device_, brush.get())) return false;
  brushObject_ = std::move(brush);
  isBrushStale_ = false;
  return true;
}

bool AGDCPlain::clear() {
  if (!isAttached_) return false;
  RECT area;
  if (!gdi::roundRect(0, 0, std::ceil(width_), std::ceil(height_), area)) return false;
  OffsetRect(&area, -viewport_.x, -viewport_.y);
  backgroundColor_ = kWhite;
  if (clip_) SelectClipRgn(device_, baseClip_.get());
  const bool isFilled = FillRect(device_, &area, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH))) != 0;
  if (clip_) applyClip();
  return isFilled;
}

// Most lines are near and whole: no path is needed for them.
bool AGDCPlain::line(double x1, double y1, double x2, double y2) {
  constexpr double kWidestNear = 4096;
  int ends[4];
  const bool isNear = isAttached_ && !isPathOpen_ && !line_.isDashed && line_.width < kWidestNear &&
                      gdi::roundNear(x1, ends[0]) && gdi::roundNear(y1, ends[1]) && gdi::roundNear(x2, ends[2]) &&
                      gdi::roundNear(y2, ends[3]);
  if (!isNear) return DrawingContext::line(x1, y1, x2, y2);
  return preparePen(false) && MoveToEx(device_, ends[0], ends[1], nullptr) && LineTo(device_, ends[2], ends[3]);
}

bool AGDCPlain::fillRect(double x, double y, double width, double height) {
  int edges[4];
  if (isAttached_ && width >= 0 && height >= 0 && gdi::roundNear(x, edges[0]) && gdi::roundNear(y, edges[1]) &&
      gdi::roundNear(x + width, edges[2]) && gdi::roundNear(y + height, edges[3])) {
    const RECT place = {edges[0], edges[1], edges[2], edges[3]};
    return prepareBrush() && FillRect(device_, &place, brushObject_.get());
  }
  if (!isAttached_ || !isFinite({x, y}) || !isFinite({x + width, y + height})) return false;
  double right = x + width;
  double bottom = y + height;
  if (quality().softwareClipping.load(std::memory_order_relaxed)) {
    const Box room = roomAround(0);
    const auto shifted = [](double value, double from, double to, double origin) {
      return std::clamp(value, from - origin, to - origin);
    };
    x = shifted(x, room.left, room.right, origin_.x);
    right = shifted(right, room.left, room.right, origin_.x);
    y = shifted(y, room.top, room.bottom, origin_.y);
    bottom = shifted(bottom, room.top, room.bottom, origin_.y);
  }
  RECT rect;
  return gdi::roundRect(x, y, right, bottom, rect) && prepareBrush() && FillRect(device_, &rect, brushObject_.get());
}

bool AGDCPlain::patternRectPixel(i32 x, i32 y, i32 width, i32 height, const u8* pattern) {
  if (!isAttached_ || !pattern) return false;
  RECT rect;
  if (!gdi::roundRect(x, y, static_cast<double>(x) + width, static_cast<double>(y) + height, rect)) return false;
  u16 rows[8];  // each padded to a word
  for (int i = 0; i < 8; ++i) rows[i] = pattern[i];
  const gdi::Bitmap bitmap(CreateBitmap(8, 8, 1, 1, rows));
  const gdi::Brush brush(bitmap ? CreatePatternBrush(bitmap.get()) : nullptr);
  if (!brush) return false;
  const gdi::Selected selected = gdi::select(device_, brush.get());
  const COLORREF text = SetTextColor(device_, gdi::colorRef(backgroundColor_));  // of the zeroes
  const COLORREF back = SetBkColor(device_, gdi::colorRef(fillColor_));
  const bool isDrawn =
      PatBlt(device_, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, PATCOPY) != 0;
  SetTextColor(device_, text);
  SetBkColor(device_, back);
  return isDrawn;
}

bool AGDCPlain::patternRect(double x, double y, double width, double height, const u8* pattern) {
  RECT rect;
  return gdi::roundRect(x, y, x + width, y + height, rect) &&
         patternRectPixel(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, pattern);
}

bool AGDCPlain::lineOut(Point from, Point to) {
  int x1;
  int y1;
  int x2;
  int y2;
  return preparePen(false) && gdi::roundPixel(from.x, x1) && gdi::roundPixel(from.y, y1) && gdi::roundPixel(to.x, x2) &&
         gdi::roundPixel(to.y, y2) && MoveToEx(device_, x1, y1, nullptr) && LineTo(device_, x2, y2);
}

namespace {

// Hands a path to GDI, lines in batches.
class Tracer {
 public:
  explicit Tracer(HDC device) : device_(device) {}

  bool move(Point p) noexcept {
    POINT at;
    return flush() && fits(p, at) && MoveToEx(device_, at.x, at.y, nullptr);
  }
  bool line(Point p) noexcept {
    POINT at;
    if (!fits(p, at)) return false;
    points_[count_++] = at;
    return count_ < kBatch || flush();
  }
  bool curve(Point p1, Point p2, Point p3) noexcept {
    POINT at[3];
    return flush() && fits(p1, at[0]) && fits(p2, at[1]) && fits(p3, at[2]) && PolyBezierTo(device_, at, 3);
  }
  bool close() noexcept { return flush() && CloseFigure(device_); }

  bool flush() noexcept {
    const DWORD count = std::exchange(count_, 0);
    return count == 0 || PolylineTo(device_, points_, count);
  }

 private:
  static constexpr DWORD kBatch = 256;

  static bool fits(Point p, POINT& at) noexcept {
    int x;
    int y;
    if (!gdi::roundPixel(p.x, x) || !gdi::roundPixel(p.y, y)) return false;
    at = {x, y};
    return true;
  }

  HDC device_;
  DWORD count_ = 0;
  POINT points_[kBatch];
};

}  // namespace

bool AGDCPlain::tracePath(const Path& path) noexcept {
  if (!BeginPath(device_)) return false;
  Tracer tracer(device_);
  if (path.replay(tracer) && tracer.flush() && EndPath(device_)) return true;
  AbortPath(device_);
  return false;
}

bool AGDCPlain::strokeOut(const Path& path, bool isCut) {
  return preparePen(isCut) && tracePath(path) && StrokePath(device_);
}

bool AGDCPlain::fillOut(const Path& path) {
  if (!prepareBrush() || !tracePath(path)) return false;
  SetPolyFillMode(device_, fillRule_ == FillRule::Winding ? WINDING : ALTERNATE);
  return FillPath(device_) != 0;
}

namespace {

// The pixels within a circle or an ellipse; GDI leaves out the right and the bottom of a box.
bool within(double x, double y, double radiusX, double radiusY, RECT& box) noexcept {
  return radiusX >= 0 && radiusY >= 0 && gdi::roundRect(x - radiusX, y - radiusY, x + radiusX, y + radiusY, box);
}

bool fitted(const PixelBox& box, RECT& rect) noexcept {
  return gdi::roundRect(box.left, box.top, box.right, box.bottom, rect);
}

// Larger ellipses and arcs are refused: Wine takes a second and more for them, and writes outside its memory at ten
// times that size.
bool isDrawable(const RECT& box) noexcept {
  constexpr i32 kMost = 1 << 20;
  return box.right - box.left <= kMost && box.bottom - box.top <= kMost;
}

// Those that a thin line on it runs through.
bool along(double x, double y, double radiusX, double radiusY, RECT& box) noexcept {
  if (!within(x, y, radiusX, radiusY, box)) return false;
  ++box.right;
  ++box.bottom;
  return true;
}

}  // namespace

bool AGDCPlain::ellipseIn(const RECT& box, bool isFilled) noexcept {
  if (!isAttached_ || !isDrawable(box)) return false;
  const auto width = isFilled ? 0 : static_cast<int>(std::floor(line_.width + 0.5));
  const gdi::Pen pen(CreatePen(PS_SOLID, width, gdi::colorRef(isFilled ? fillColor_ : strokeColor_)));
  if (!pen || !prepareBrush()) return false;
  const gdi::Selected penSelected = gdi::select(device_, pen.get());
  const gdi::Selected brushSelected = gdi::select(device_, isFilled ? brushObject_.get() : GetStockObject(NULL_BRUSH));
  return Ellipse(device_, box.left, box.top, box.right, box.bottom) != 0;
}

bool AGDCPlain::arcIn(const RECT& box, POINT start, POINT end) noexcept {
  if (!isAttached_ || !isDrawable(box)) return false;
  const gdi::Pen pen(CreatePen(PS_SOLID, static_cast<int>(std::floor(line_.width + 0.5)), gdi::colorRef(strokeColor_)));
  if (!pen) return false;
  const gdi::Selected selected = gdi::select(device_, pen.get());
  return Arc(device_, box.left, box.top, box.right, box.bottom, start.x, start.y, end.x, end.y) != 0;
}

bool AGDCPlain::arcPixel(const PixelBox& box, i32 startX, i32 startY, i32 endX, i32 endY) {
  RECT rect;
  return fitted(box, rect) && arcIn(rect, {startX, startY}, {endX, endY});
}

bool AGDCPlain::arc(double centerX, double centerY, double radiusX, double radiusY, double start, double sweep) {
  RECT box;
  if (!std::isfinite(start) || !std::isfinite(sweep) || !along(centerX, centerY, radiusX, radiusY, box)) return false;
  if (sweep == 0) return isAttached_;
  const double degree = std::acos(-1.0) / 180;
  // Far out, so that rounding does not turn the ends.
  const double reach = 1 << 20;
  const auto ray = [&](double angle) {
    return POINT{static_cast<LONG>(centerX + reach * radiusX / (radiusX + radiusY + 1) * std::cos(angle * degree)),
                 static_cast<LONG>(centerY - reach * radiusY / (radiusX + radiusY + 1) * std::sin(angle * degree))};
  };
  if (std::abs(sweep) >= 360) return arcIn(box, ray(start), ray(start));
  return sweep > 0 ? arcIn(box, ray(start), ray(start + sweep)) : arcIn(box, ray(start + sweep), ray(start));
}

bool AGDCPlain::ellipsePixel(const PixelBox& box) {
  RECT rect;
  return fitted(box, rect) && ellipseIn(rect, false);
}

bool AGDCPlain::ellipse(double centerX, double centerY, double radiusX, double radiusY) {
  RECT box;
  return along(centerX, centerY, radiusX, radiusY, box) && ellipseIn(box, false);
}

bool AGDCPlain::fillEllipse(double centerX, double centerY, double radiusX, double radiusY) {
  RECT box;
  if (!within(centerX, centerY, radiusX, radiusY, box)) return false;
  return IsRectEmpty(&box) ? isAttached_ : ellipseIn(box, true);
}

}  // namespace corvix
