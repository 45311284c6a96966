// Images through GDI. What GDI cannot place by itself (turned, transparent) is sampled here first.
#include "graphics/contexts/PlainContext_p.h"
#include "graphics/images/Recolor_p.h"
#include "graphics/quality/Quality_p.h"

namespace corvix {

namespace {

struct BitsInfo {
  BITMAPINFOHEADER header = {};
  RGBQUAD colors[256];  // as many as there are in the palette

  explicit BitsInfo(const ImageBits& bits) noexcept {
    header.biSize = sizeof header;
    header.biWidth = bits.width;
    header.biHeight = -bits.height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(bits.bitsPerPixel);
    header.biCompression = BI_RGB;
    header.biClrUsed = static_cast<DWORD>(bits.palette.size());
    for (std::size_t i = 0; i < bits.palette.size(); ++i) {
      const Color color = bits.palette[i];
      colors[i] = {static_cast<BYTE>(blueOf(color)), static_cast<BYTE>(greenOf(color)), static_cast<BYTE>(redOf(color)),
                   0};
    }
  }
  const BITMAPINFO* get() const noexcept { return reinterpret_cast<const BITMAPINFO*>(this); }
};

// GDI assumes rows without gaps: those of a part of an image have some.
bool isPacked(const ImageBits& bits) noexcept {
  return bits.strideBytes == gdi::rowBytes(bits.width, bits.bitsPerPixel);
}

// Of what is enlarged: what is made smaller was averaged before.
int stretchMode() noexcept { return quality().stretchMode() == StretchMode::Best ? HALFTONE : COLORONCOLOR; }

bool blendOut(HDC device, const ImageBits& bits, i32 x, i32 y) noexcept {
  const gdi::PixelBitmap pixels = gdi::createPixels(bits.width, bits.height, 32);
  const gdi::MemoryDevice memory(CreateCompatibleDC(device));
  if (!pixels.bitmap || !memory) return false;
  for (i32 line = 0; line < bits.height; ++line) {
    u8* to = pixels.pixels + static_cast<std::ptrdiff_t>(pixels.strideBytes) * line;
    const u8* from = bits.row(line);
    for (i32 i = 0; i < bits.width; ++i, to += 4, from += 4) {
      const u32 alpha = from[3];
      for (int part = 0; part < 3; ++part) to[part] = static_cast<u8>((from[part] * alpha + 127) / 255);
      to[3] = static_cast<u8>(alpha);
    }
  }
  const gdi::Selected selected = gdi::select(memory.get(), pixels.bitmap.get());
  const BLENDFUNCTION over = {AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
  return selected &&
         GdiAlphaBlend(device, x, y, bits.width, bits.height, memory.get(), 0, 0, bits.width, bits.height, over);
}

}  // namespace

bool AGDCPlain::imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) {
  const bool isUpright = unitToDevice.b == 0 && unitToDevice.c == 0 && unitToDevice.a > 0 && unitToDevice.d > 0;
  RECT box;
  if (isUpright && !bits.hasAlpha && isPacked(bits) &&
      gdi::roundRect(unitToDevice.e, unitToDevice.f, unitToDevice.e + unitToDevice.a, unitToDevice.f + unitToDevice.d,
                     box)) {
    BitsInfo info(bits);
    const PixelBox& seen = bits.seen;
    if (box.right - box.left == bits.width && box.bottom - box.top == bits.height) {
      const auto rows = static_cast<DWORD>(seen.bottom - seen.top);
      info.header.biHeight = seen.top - seen.bottom;
      return SetDIBitsToDevice(device_, box.left + seen.left, box.top + seen.top,
                               static_cast<DWORD>(seen.right - seen.left), rows, seen.left, 0, 0, rows,
                               bits.row(seen.top), info.get(), DIB_RGB_COLORS) != 0;
    }
    SetStretchBltMode(device_, stretchMode());
    SetBrushOrgEx(device_, 0, 0, nullptr);
    return StretchDIBits(device_, box.left, box.top, box.right - box.left, box.bottom - box.top, 0, 0, bits.width,
                         bits.height, bits.pixels, info.get(), DIB_RGB_COLORS, SRCCOPY) != 0;
  }
  if (isUpright && bits.hasAlpha && unitToDevice.a == bits.width && unitToDevice.d == bits.height &&
      gdi::roundRect(unitToDevice.e, unitToDevice.f, unitToDevice.e, unitToDevice.f, box)) {
    return blendOut(device_, bits, box.left, box.top);
  }
  i32 left = 0;
  i32 top = 0;
  const bool isSampledSmooth = smooth && quality().stretchMode() == StretchMode::Best;
  const ImageBits sampled = transformed(bits, unitToDevice, seenArea(), isSampledSmooth, left, top);
  return sampled.width == 0 || blendOut(device_, sampled, left, top);
}

bool AGDCPlain::turnedOut(const ImageBits& bits, ImageTurn turn, const Matrix& unitToDevice, bool smooth) {
  return imageOut(turned(bits, turn), unitToDevice, smooth);
}

bool AGDCPlain::drawRecolored(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const Recolor& recolor) {
  ImageView view;
  return isAttached_ && viewOf(image, view) &&
         placeImage(view,
                    {static_cast<double>(width), 0, 0, static_cast<double>(height), static_cast<double>(x),
                     static_cast<double>(y)},
                    ImageTurn::None, recolor);
}

bool AGDCPlain::drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) {
  return matrix && drawRecolored(image, x, y, width, height, recolorBy(matrix));
}

bool AGDCPlain::drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                                  i32 count) {
  return changes && count > 0 && drawRecolored(image, x, y, width, height, recolorBy(changes, count));
}

}  // namespace corvix
