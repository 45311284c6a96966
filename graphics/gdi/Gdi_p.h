// What the contexts use of GDI: its handles, owned, and the few calls that need care.
#pragma once

#include "core/baselib/Api.h"
#include "core/baselib/system/OwningHandle_p.h"
#include "graphics/Color.h"

#include <algorithm>
#include <cmath>

#include <windows.h>

namespace corvix::gdi {

template <class Object>
struct DeleteGdiObject : NullIsNone<Object> {
  static void close(Object handle) noexcept { DeleteObject(handle); }
};
using Pen = OwningHandle<DeleteGdiObject<HPEN>>;
using Brush = OwningHandle<DeleteGdiObject<HBRUSH>>;
using Region = OwningHandle<DeleteGdiObject<HRGN>>;
using Bitmap = OwningHandle<DeleteGdiObject<HBITMAP>>;
using OwnFont = OwningHandle<DeleteGdiObject<HFONT>>;

struct DeleteDevice : NullIsNone<HDC> {
  static void close(HDC handle) noexcept { DeleteDC(handle); }
};
using MemoryDevice = OwningHandle<DeleteDevice>;

struct ReleaseScreen : NullIsNone<HDC> {
  static void close(HDC handle) noexcept { ReleaseDC(nullptr, handle); }
};
using ScreenDevice = OwningHandle<ReleaseScreen>;

// What was selected into a device context before, selected back.
struct Selection {
  HDC device;
  HGDIOBJ previous;
};
struct SelectBack {
  using Handle = Selection;
  static Handle none() noexcept { return {nullptr, nullptr}; }
  static void close(Handle handle) noexcept { SelectObject(handle.device, handle.previous); }
};
inline bool operator!=(const Selection& a, const Selection& b) noexcept { return a.previous != b.previous; }
using Selected = OwningHandle<SelectBack>;

inline Selected select(HDC device, HGDIOBJ object) noexcept {
  const HGDIOBJ previous = object ? SelectObject(device, object) : nullptr;
  return Selected(Selection{device, previous == HGDI_ERROR ? nullptr : previous});
}

constexpr COLORREF colorRef(Color color) noexcept { return redOf(color) | greenOf(color) << 8 | blueOf(color) << 16; }
constexpr Color fromColorRef(COLORREF color) noexcept { return rgb(color & 255, color >> 8 & 255, color >> 16 & 255); }

// Coordinates that GDI takes: 27 bits and a sign.
constexpr double kGreatest = 134217727.0;

// A place that needs no rounding.
inline bool isWhole(double value) noexcept { return std::abs(value) <= kGreatest && value == std::floor(value); }

// The pixel that a point lies nearest to, and the first one behind an edge; halves go up, as GDI+ has it.
inline bool roundPixel(double value, int& pixel) noexcept {
  if (!(std::abs(value) <= kGreatest)) return false;  // no number included
  pixel = static_cast<int>(std::floor(value + 0.5));
  return true;
}

// The same for numbers near the output, which are most, without the run-time's rounding; false for others.
inline bool roundNear(double value, int& pixel) noexcept {
  constexpr int kNear = 16384;
  if (!(value > -kNear && value < kNear)) return false;
  pixel = static_cast<int>(value + (kNear + 0.5)) - kNear;
  return true;
}

// The pixels whose middles are inside, or on the right or lower edge; false if the corners do not fit.
inline bool roundRect(double left, double top, double right, double bottom, RECT& rect) noexcept {
  int values[4];
  const double edges[4] = {left, top, right, bottom};
  for (int i = 0; i < 4; ++i) {
    if (!roundPixel(edges[i], values[i])) return false;
  }
  rect = {std::min(values[0], values[2]), std::min(values[1], values[3]), std::max(values[0], values[2]),
          std::max(values[1], values[3])};
  return true;
}

// Narrows a device context's clip for a block of code, by a region that counts from `base` on. Null: leaves it alone.
class ClipScope {
 public:
  ClipScope(HDC device, HRGN clip, POINT base) noexcept : device_(clip ? device : nullptr) {
    if (!device_) return;
    before_.reset(CreateRectRgn(0, 0, 0, 0));
    if (GetClipRgn(device_, before_.get()) != 1) before_.reset();
    OffsetRgn(clip, base.x, base.y);
    ExtSelectClipRgn(device_, clip, RGN_AND);
    OffsetRgn(clip, -base.x, -base.y);
  }
  ~ClipScope() {
    if (device_) SelectClipRgn(device_, before_.get());
  }
  ClipScope(const ClipScope&) = delete;
  ClipScope& operator=(const ClipScope&) = delete;

 private:
  HDC device_;
  Region before_;
};

// A bitmap with its pixels in reach: rows from the top, 24 or 32 bits. Empty when it cannot be had.
struct PixelBitmap {
  Bitmap bitmap;
  u8* pixels = nullptr;
  i32 strideBytes = 0;
};
PixelBitmap createPixels(i32 width, i32 height, i32 bitsPerPixel);

constexpr i32 rowBytes(i64 width, i32 bitsPerPixel) noexcept {
  return static_cast<i32>((width * bitsPerPixel + 31) / 32 * 4);
}

}  // namespace corvix::gdi
