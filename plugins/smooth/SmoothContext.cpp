// The life of a smooth context, its device and its state.
#include "plugins/smooth/SmoothContext_p.h"

namespace corvix::smooth {

SmoothContext::SmoothContext(bool isMemory, DeviceHandle device, double width, double height)
    : DrawingContext(device, width, height), isMemory_(isMemory) {
  if (!isMemory || device || !own_.create(width, height, 32)) return;
  if (own_.pixels() && take(own_.device(), width, height)) {
    clear();
  } else {
    own_.reset();
  }
}

SmoothContext::~SmoothContext() { SmoothContext::detach(); }

bool SmoothContext::take(DeviceHandle device, double width, double height) {
  if (!DrawingContext::take(device, width, height)) return false;
  isStale_ = true;
  return true;
}

bool SmoothContext::detach() {
  if (!isAttached_) return false;
  drawTiles();
  tiles_.end();
  layers_.clear();
  closed_ = {};
  beginGdi();
  picture_.reset();
  clip_ = {};
  saved_.clear();
  clipChanged();
  look_ = {};
  for (SharedPaint& paint : paints_) paint.reset();
  DrawingContext::detach();
  own_.reset();
  return true;
}

IAGDC* SmoothContext::createDetached() { return new SmoothContext(isMemory_, nullptr, 0, 0); }

u32 SmoothContext::capabilities() const noexcept {
  return kOffered | (isMemory_ ? capability::kMemoryTarget : capability::kScreenTarget | capability::kOtherTarget);
}

PixelBox SmoothContext::outputBox() const noexcept {
  const auto whole = [](double length) { return static_cast<i32>(std::ceil(std::clamp(length, 0.0, gdi::kGreatest))); };
  return {0, 0, whole(width_), whole(height_)};
}

Surface SmoothContext::base() const noexcept {
  const OffscreenBitmap& bitmap = own_.pixels() ? own_ : picture_;
  auto* const pixels = reinterpret_cast<Pixel*>(bitmap.pixels());
  return {pixels, bitmap.strideBytes() / 4, pixels ? outputBox() : PixelBox{0, 0, 0, 0}, true};
}

Surface SmoothContext::surface() const noexcept {
  if (layers_.empty()) return base();
  const Layer& layer = layers_.back();
  return {const_cast<Pixel*>(layer.pixels.data()), layer.box.right - layer.box.left, layer.box, false};
}

bool SmoothContext::prepare() noexcept {
  if (!canDraw()) return false;
  takeBack();
  if (own_.pixels()) {
    if (mayGdiHaveDrawn_) GdiFlush();
    mayGdiHaveDrawn_ = false;
    return true;
  }
  const PixelBox output = outputBox();
  if (isEmpty(output) || !layers_.empty()) return true;
  if (!picture_.pixels()) {
    if (!picture_.create(width_, height_, 32) || !picture_.pixels()) {
      picture_.reset();
      return false;
    }
    isStale_ = true;
  }
  if (!isStale_) return true;
  // Of a printer there is no picture: it is paper.
  const HDC to = picture_.device();
  if (isNonDisplay_ || !BitBlt(to, 0, 0, output.right, output.bottom, device_, 0, 0, SRCCOPY)) {
    PatBlt(to, 0, 0, output.right, output.bottom, WHITENESS);
  }
  GdiFlush();
  isStale_ = false;
  changed_ = {0, 0, 0, 0};
  return true;
}

void SmoothContext::changed(const PixelBox& box) noexcept {
  if (layers_.empty()) changed_ = united(changed_, box);
}

void SmoothContext::showChanges() noexcept {
  const PixelBox box = std::exchange(changed_, {0, 0, 0, 0});
  if (!picture_.pixels() || isEmpty(box)) return;
  BitBlt(device_, box.left, box.top, box.right - box.left, box.bottom - box.top, picture_.device(), box.left, box.top,
         SRCCOPY);
}

void SmoothContext::beginGdi() noexcept {
  takeBack();
  if (!isAttached_) return;
  drawTiles();
  showChanges();
  isStale_ = mayGdiHaveDrawn_ = true;
}

void SmoothContext::takeBack() noexcept {
  if (!lent_) return;
  lent_.reset();
  SetViewportOrgEx(device_, baseOrigin_.x, baseOrigin_.y, nullptr);
}

DeviceHandle SmoothContext::deviceContext() {
  if (!layers_.empty()) return nullptr;
  beginGdi();
  if (!isAttached_) return device_;
  i32 left;
  i32 top;
  wholeOrigin(left, top);
  lent_.emplace(device_, deviceClip(), baseOrigin_);
  SetViewportOrgEx(device_, baseOrigin_.x + left, baseOrigin_.y + top, nullptr);
  return device_;
}

bool SmoothContext::copyTo(DeviceHandle device, i32 x, i32 y) {
  return layers_.empty() && DrawingContext::copyTo(device, x, y);
}

PixelMemory SmoothContext::beginPixels() noexcept {
  if (!prepare()) return {};
  drawTiles();
  const Surface to = surface();
  if (!to.pixels) return {};
  changed(to.box);
  const auto stride = static_cast<i32>(to.stride * 4);
  return {reinterpret_cast<u8*>(to.pixels - to.stride * to.box.top - to.box.left), stride, to.box.right, to.box.bottom,
          4};
}

bool SmoothContext::setOrigin(double x, double y) {
  if (!DrawingContext::setOrigin(x, y)) return false;
  takeBack();
  clipChanged();
  return true;
}

void SmoothContext::wholeOrigin(i32& x, i32& y) const noexcept {
  int left = 0;
  int top = 0;
  gdi::roundPixel(origin_.x, left);
  gdi::roundPixel(origin_.y, top);
  x = left;
  y = top;
}

bool SmoothContext::setTransform(const Matrix& userToDevice) {
  if (!userToDevice.isFinite()) return false;
  transform_ = userToDevice;
  isSingular_ = !userToDevice.canTurnBack();
  return true;
}

bool SmoothContext::setStrokeColor(Color color) {
  paints_[static_cast<int>(PaintUse::Stroke)].reset();
  return DrawingContext::setStrokeColor(color);
}

bool SmoothContext::setFillColor(Color color) {
  paints_[static_cast<int>(PaintUse::Fill)].reset();
  return DrawingContext::setFillColor(color);
}

bool SmoothContext::selectPenKind(bool isHairline) noexcept {
  isHairline_ = isHairline;
  return true;
}

i32 SmoothContext::stepOf(i32 level) noexcept {
  constexpr i32 kLevels[5] = {0, 64, 128, 192, 255};
  return kLevels[4 * std::clamp(level, 0, 255) / 255];
}

}  // namespace corvix::smooth
