#include "graphics/contexts/DrawingContext_p.h"

#include "graphics/images/AGImage_p.h"

namespace corvix {

namespace {

bool isNonDisplayDevice(HDC device) noexcept { return device && GetDeviceCaps(device, TECHNOLOGY) != DT_RASDISPLAY; }

bool isDevice(HDC device) noexcept {
  const DWORD type = GetObjectType(device);
  return type == OBJ_DC || type == OBJ_MEMDC || type == OBJ_METADC || type == OBJ_ENHMETADC;
}

bool isSize(double length) noexcept { return length >= 0 && std::isfinite(length); }

}  // namespace

DrawingContext::DrawingContext(DeviceHandle device, double width, double height)
    : device_(device),
      width_(width),
      height_(height),
      isAttached_(device != nullptr),
      isNonDisplay_(isNonDisplayDevice(device)) {
  readBaseOrigin();
}

DrawingContext::~DrawingContext() = default;

bool DrawingContext::attach(DeviceHandle device, double width, double height) {
  return isDevice(device) && isSize(width) && isSize(height) && take(device, width, height);
}

bool DrawingContext::take(DeviceHandle device, double width, double height) {
  if (isAttached_) detach();
  device_ = device;
  width_ = width;
  height_ = height;
  isAttached_ = true;
  isNonDisplay_ = isNonDisplayDevice(device);
  readBaseOrigin();
  return true;
}

void DrawingContext::readBaseOrigin() noexcept {
  baseOrigin_ = viewport_ = {0, 0};
  if (device_) GetViewportOrgEx(device_, &baseOrigin_);
}

bool DrawingContext::detach() {
  if (!isAttached_) return false;
  device_ = nullptr;
  isAttached_ = false;
  return true;
}

DeviceHandle DrawingContext::acquireDevice(BitmapHandle bitmap) {
  Borrowed borrowed;
  borrowed.device.reset(CreateCompatibleDC(device_));
  if (!borrowed.device) return nullptr;
  if (bitmap) {
    borrowed.selected = gdi::select(borrowed.device.get(), bitmap);
    if (!borrowed.selected) return nullptr;
  }
  const HDC device = borrowed.device.get();
  return withinMemory([&] {
    borrowed_.push_back(std::move(borrowed));
    return true;
  })
             ? device
             : nullptr;
}

bool DrawingContext::returnDevice(DeviceHandle device) {
  for (Borrowed& borrowed : borrowed_) {
    if (borrowed.device.get() != device || !device) continue;
    std::swap(borrowed, borrowed_.back());
    borrowed_.pop_back();
    return true;
  }
  return false;
}

DeviceHandle DrawingContext::deviceContext() {
  beginGdi();
  return device_;
}

bool DrawingContext::setOrigin(double x, double y) {
  if (!(std::abs(x) <= gdi::kGreatest && std::abs(y) <= gdi::kGreatest)) return false;
  origin_ = {x, y};
  return true;
}

IAGImage* DrawingContext::createImage(i32 width, i32 height, ColorModel model, i32 bitsPerPixel) {
  return AGImage::create(width, height, model, bitsPerPixel).detach();
}

bool DrawingContext::setLineCap(i32 cap) {
  line_.cap = cap;
  lineStateChanged();
  return true;
}

bool DrawingContext::setFillRule(FillRule rule) {
  fillRule_ = rule;
  return true;
}

bool DrawingContext::setBackgroundColor(Color color) {
  backgroundColor_ = color;
  return true;
}

bool DrawingContext::setStrokeColor(Color color) {
  strokeColor_ = color;
  colorsChanged();
  return true;
}

bool DrawingContext::setFillColor(Color color) {
  fillColor_ = color;
  colorsChanged();
  return true;
}

Color DrawingContext::nearestColor(Color color) {
  if (!isAttached_) return color;
  beginGdi();
  const COLORREF nearest = GetNearestColor(device_, gdi::colorRef(color));
  return nearest == CLR_INVALID ? color : gdi::fromColorRef(nearest);
}

bool DrawingContext::setDash(const double* lengths, i32 count, double phase) {
  if (!withinMemory([&] { return line_.setDash(lengths, count, phase); })) return false;
  lineStateChanged();
  return true;
}

i32 DrawingContext::dash(double* lengths, i32 capacity, double* phase) const noexcept {
  const auto count = static_cast<i32>(line_.dashes.size());
  for (i32 i = 0; lengths && i < count && i < capacity; ++i) lengths[i] = line_.dashes[static_cast<std::size_t>(i)];
  if (phase) *phase = line_.dashPhase;
  return count;
}

bool DrawingContext::setLineWidth(double width) {
  if (!(width >= 0 && width <= gdi::kGreatest)) return false;
  line_.width = width;
  lineStateChanged();
  return true;
}

bool DrawingContext::setLineJoin(i32 join) {
  line_.join = join;
  lineStateChanged();
  return true;
}

bool DrawingContext::setMiterLimit(double limit) {
  if (!(limit > 0 && limit <= gdi::kGreatest)) return false;
  line_.miterLimit = limit;
  lineStateChanged();
  return true;
}

i32 DrawingContext::deviceCapability(i32 index) {
  if (!isAttached_) return 0;
  beginGdi();
  return GetDeviceCaps(device_, index);
}

bool DrawingContext::userToDevice(Point* points, i32 count) const noexcept {
  if (!points) return count <= 0;
  for (i32 i = 0; i < count; ++i) points[i] = transform_.apply(points[i]);
  return true;
}

bool DrawingContext::deviceToUser(Point* points, i32 count) const noexcept {
  if (!points) return count <= 0;
  if (transform_.isIdentity()) return true;
  if (!transform_.canTurnBack()) return false;
  const Matrix inverse = transform_.inverse();
  for (i32 i = 0; i < count; ++i) points[i] = inverse.apply(points[i]);
  return true;
}

}  // namespace corvix
