#include "graphics/contexts/OffscreenBitmap_p.h"

#include <climits>

namespace corvix {

bool OffscreenBitmap::create(double width, double height, i32 bitsPerPixel) noexcept {
  reset();
  const double wide = std::ceil(width);
  const double high = std::ceil(height);
  if (!(std::abs(wide) <= INT_MAX && std::abs(high) <= INT_MAX) || wide == 0 || high == 0) return false;
  const i32 bytesPerPixel = bitsPerPixel / 8;
  if (std::abs(wide * high) * bytesPerPixel > INT_MAX) return false;
  width_ = static_cast<i32>(wide);
  height_ = static_cast<i32>(high);
  const gdi::ScreenDevice screen(GetDC(nullptr));
  gdi::PixelBitmap made = gdi::createPixels(width_, height_, bitsPerPixel);
  bitmap_ = std::move(made.bitmap);
  pixels_ = made.pixels;
  strideBytes_ = made.strideBytes;
  if (!bitmap_) bitmap_.reset(CreateCompatibleBitmap(screen.get(), width_, height_));
  if (!bitmap_) return false;
  device_.reset(CreateCompatibleDC(screen.get()));
  if (device_) previous_ = gdi::select(device_.get(), bitmap_.get());
  if (previous_) return true;
  reset();
  return false;
}

void OffscreenBitmap::reset() noexcept {
  previous_.reset();
  device_.reset();
  bitmap_.reset();
  pixels_ = nullptr;
}

}  // namespace corvix
