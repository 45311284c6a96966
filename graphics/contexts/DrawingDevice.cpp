// What goes straight to the device through GDI in every context: frames that invert, copies.
#include "graphics/contexts/DrawingContext_p.h"

namespace corvix {

bool DrawingContext::toLocal(const PixelBox& box, RECT& rect) const noexcept {
  if (!gdi::roundRect(box.left + origin_.x, box.top + origin_.y, box.right + origin_.x, box.bottom + origin_.y, rect)) {
    return false;
  }
  OffsetRect(&rect, -viewport_.x, -viewport_.y);
  return true;
}

bool DrawingContext::clipRectPixel(const PixelBox& box) {
  return clipRect(box.left, box.top, static_cast<double>(box.right) - box.left,
                  static_cast<double>(box.bottom) - box.top);
}

bool DrawingContext::xorRect(const PixelBox& box) {
  if (!canDraw()) return false;
  beginGdi();
  RECT rect;
  if (!toLocal(box, rect)) return false;
  const gdi::ClipScope scope(device_, clipBesideDevice(), baseOrigin_);
  // By exclusive or, white inverts a pixel and black leaves it.
  const gdi::Pen pen(CreatePen(PS_SOLID, 1, RGB(255, 255, 255)));
  const gdi::Brush brush(CreateSolidBrush(RGB(0, 0, 0)));
  if (!pen || !brush) return false;
  const gdi::Selected penSelected = gdi::select(device_, pen.get());
  const gdi::Selected brushSelected = gdi::select(device_, brush.get());
  const int mode = SetROP2(device_, R2_XORPEN);
  const bool isDrawn = mode && Rectangle(device_, rect.left, rect.top, rect.right, rect.bottom);
  if (mode) SetROP2(device_, mode);
  return isDrawn;
}

bool DrawingContext::focusRect(const PixelBox& box) {
  if (!canDraw()) return false;
  beginGdi();
  RECT rect;
  if (!toLocal(box, rect)) return false;
  const gdi::ClipScope scope(device_, clipBesideDevice(), baseOrigin_);
  return DrawFocusRect(device_, &rect) != 0;
}

bool DrawingContext::copyTo(DeviceHandle device, i32 x, i32 y) {
  if (!canDraw() || !device) return false;
  beginGdi();
  const gdi::Region clip(deviceClip() ? CreateRectRgn(0, 0, 0, 0) : nullptr);
  if (clip) {
    POINT target = {x, y};
    LPtoDP(device, &target, 1);
    CombineRgn(clip.get(), deviceClip(), nullptr, RGN_COPY);
    OffsetRgn(clip.get(), target.x, target.y);
  }
  const gdi::ClipScope scope(device, clip.get(), {0, 0});
  const POINT from = local(0, 0);
  int width;
  int height;
  return gdi::roundPixel(std::ceil(width_), width) && gdi::roundPixel(std::ceil(height_), height) &&
         BitBlt(device, x, y, width, height, device_, from.x, from.y, SRCCOPY);
}

}  // namespace corvix
