#include "graphics/gdi/Gdi_p.h"

namespace corvix::gdi {

PixelBitmap createPixels(i32 width, i32 height, i32 bitsPerPixel) {
  struct {
    BITMAPINFOHEADER header;
    RGBQUAD colors[256];
  } info = {};
  info.header.biSize = sizeof info.header;
  info.header.biWidth = width;
  info.header.biHeight = height > 0 ? -height : height;
  info.header.biPlanes = 1;
  info.header.biBitCount = static_cast<WORD>(bitsPerPixel);
  info.header.biCompression = BI_RGB;
  info.header.biXPelsPerMeter = 100;
  info.header.biYPelsPerMeter = 100;
  for (int i = 0; i < 256; ++i) {
    const auto level = static_cast<BYTE>(i);
    info.colors[i] = {level, level, level, 0};
  }
  PixelBitmap made;
  void* pixels = nullptr;
  made.bitmap.reset(
      CreateDIBSection(nullptr, reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS, &pixels, nullptr, 0));
  if (made.bitmap) {
    made.pixels = static_cast<u8*>(pixels);
    made.strideBytes = rowBytes(width, bitsPerPixel);
  }
  return made;
}

}  // namespace corvix::gdi
