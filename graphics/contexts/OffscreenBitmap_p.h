// OffscreenBitmap: a bitmap and the device context that it is selected into, owned. 24 or 32 bits with the pixels in
// reach, or whatever the screen has when that cannot be had.
#pragma once

#include "graphics/gdi/Gdi_p.h"

namespace corvix {

class OffscreenBitmap {
 public:
  // A fraction of a pixel takes a whole one. Empty when either is 0, no number, more than the system has, or
  // both together 2 GiB.
  bool create(double width, double height, i32 bitsPerPixel = 24) noexcept;
  void reset() noexcept;

  HDC device() const noexcept { return device_.get(); }
  HBITMAP bitmap() const noexcept { return bitmap_.get(); }
  u8* pixels() const noexcept { return pixels_; }
  i32 strideBytes() const noexcept { return strideBytes_; }
  i32 width() const noexcept { return width_; }
  i32 height() const noexcept { return height_; }

 private:
  gdi::Bitmap bitmap_;
  gdi::MemoryDevice device_;
  gdi::Selected previous_;  // goes first
  u8* pixels_ = nullptr;
  i32 strideBytes_ = 0;
  i32 width_ = 0;
  i32 height_ = 0;
};

}  // namespace corvix
