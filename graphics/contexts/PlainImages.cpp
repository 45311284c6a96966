// Images through GDI. What GDI cannot place by itself (turned, transparent) is sampled here first.
#include "graphics/contexts/PlainContext_p.h"
#include "graphics/quality/Quality.h"

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

int stretchModeFor(const ImageBits& bits, const RECT& box) noexcept {
  const bool isReduced = box.right - box.left < bits.width || box.bottom - box.top < bits.height;
  switch (quality().stretchMode()) {
    case StretchMode::Best:
      return HALFTONE;
    case StretchMode::Normal:
      return isReduced ? HALFTONE : COLORONCOLOR;
    default:
      return COLORONCOLOR;
  }
}

u32 clampLevel(float level) noexcept { return static_cast<u32>(std::clamp(level, 0.0F, 1.0F) * 255 + 0.5F); }

// Every pixel of 32 bits through `change`.
template <class Change>
void eachColor(ImageBits& bits, Change change) {
  for (i32 y = 0; y < bits.height; ++y) {
    auto* const row =
        reinterpret_cast<Color*>(bits.converted.data() + static_cast<std::ptrdiff_t>(bits.strideBytes) * y);
    for (i32 x = 0; x < bits.width; ++x)
      row[x] = change(argb(bits.hasAlpha ? alphaOf(row[x]) : 255, redOf(row[x]), greenOf(row[x]), blueOf(row[x])));
  }
  bits.hasAlpha = true;
}

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
    const BitsInfo info(bits);
    if (box.right - box.left == bits.width && box.bottom - box.top == bits.height) {
      return SetDIBitsToDevice(device_, box.left, box.top, static_cast<DWORD>(bits.width),
                               static_cast<DWORD>(bits.height), 0, 0, 0, static_cast<UINT>(bits.height), bits.pixels,
                               info.get(), DIB_RGB_COLORS) != 0;
    }
    SetStretchBltMode(device_, stretchModeFor(bits, box));
    SetBrushOrgEx(device_, 0, 0, nullptr);
    return StretchDIBits(device_, box.left, box.top, box.right - box.left, box.bottom - box.top, 0, 0, bits.width,
                         bits.height, bits.pixels, info.get(), DIB_RGB_COLORS, SRCCOPY) != 0;
  }
  i32 left = 0;
  i32 top = 0;
  const bool isSampledSmooth = smooth && quality().stretchMode() == StretchMode::Best;
  const ImageBits sampled = transformed(bits, unitToDevice, outputArea(), isSampledSmooth, left, top);
  return sampled.width == 0 || blendOut(device_, sampled, left, top);
}

bool AGDCPlain::drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) {
  if (!isAttached_ || !matrix) return false;
  return withinMemory([&] {
    ImageBits bits;
    if (!makeBits(image, quality().largestImage(), bits)) return false;
    bits = toArgb(bits);
    eachColor(bits, [matrix](Color color) {
      const auto part = [](u32 level) { return static_cast<float>(level) / 255; };
      const float in[5] = {part(redOf(color)), part(greenOf(color)), part(blueOf(color)), part(alphaOf(color)), 1};
      u32 out[4];
      for (int column = 0; column < 4; ++column) {
        float sum = 0;
        for (int row = 0; row < 5; ++row) sum += in[row] * matrix[5 * row + column];
        out[column] = clampLevel(sum);
      }
      return argb(out[3], out[0], out[1], out[2]);
    });
    return placeImage(bits, {static_cast<double>(width), 0, 0, static_cast<double>(height), static_cast<double>(x),
                             static_cast<double>(y)});
  });
}

bool AGDCPlain::drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                                  i32 count) {
  if (!isAttached_ || !changes || count <= 0) return false;
  return withinMemory([&] {
    ImageBits bits;
    if (!makeBits(image, quality().largestImage(), bits)) return false;
    bits = toArgb(bits);
    eachColor(bits, [changes, count](Color color) {
      const ColorChange* const end = changes + count;
      const auto* const found = std::find_if(changes, end, [color](const ColorChange& c) { return c.from == color; });
      return found == end ? color : found->to;
    });
    return placeImage(bits, {static_cast<double>(width), 0, 0, static_cast<double>(height), static_cast<double>(x),
                             static_cast<double>(y)});
  });
}

}  // namespace corvix
