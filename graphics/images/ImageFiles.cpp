#include "graphics/images/ImageFiles_p.h"

#include "core/baselib/system/PartFile_p.h"

#include <cstring>
#include <string>

namespace corvix {

namespace {

// The system's encoders.
constexpr CLSID kBmpEncoder = {0x557CF400, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
constexpr CLSID kPngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

int formatOf(i32 bitsPerPixel, bool hasAlpha) noexcept {
  switch (bitsPerPixel) {
    case 1:
      return PixelFormat1bppIndexed;
    case 4:
      return PixelFormat4bppIndexed;
    case 8:
      return PixelFormat8bppIndexed;
    case 24:
      return PixelFormat24bppRGB;
    default:
      return hasAlpha ? PixelFormat32bppARGB : PixelFormat32bppRGB;
  }
}

// A palette of GDI+: a head and up to 256 colours.
struct PaletteBuffer {
  UINT flags = 0;
  UINT count = 0;
  Color entries[256] = {};

  Gdiplus::ColorPalette* get() noexcept { return reinterpret_cast<Gdiplus::ColorPalette*>(this); }
};

bool copyPalette(const gdiplus::Table& gp, Gdiplus::GpBitmap* bitmap, AGImage& image) noexcept {
  INT size = 0;
  PaletteBuffer palette;
  if (gp.GdipGetImagePaletteSize(bitmap, &size) != Gdiplus::Ok || size < 0 ||
      static_cast<std::size_t>(size) > sizeof palette ||
      gp.GdipGetImagePalette(bitmap, palette.get(), size) != Gdiplus::Ok) {
    return false;
  }
  const auto count = std::min(static_cast<i32>(palette.count), image.paletteSize());
  return image.setPalette(palette.entries, count);
}

}  // namespace

gdiplus::OwnedBitmap bitmapOver(const ImageBits& bits) {
  const gdiplus::Table& gp = gdiplus::flat();
  auto bitmap = gdiplus::makeWhole<gdiplus::OwnedBitmap>([&](Gdiplus::GpBitmap** made) {
    return gp.GdipCreateBitmapFromScan0(bits.width, bits.height, bits.strideBytes,
                                        formatOf(bits.bitsPerPixel, bits.hasAlpha), const_cast<BYTE*>(bits.pixels),
                                        made);
  });
  if (bitmap && !bits.palette.empty()) {
    PaletteBuffer palette;
    palette.count = static_cast<UINT>(bits.palette.size());
    std::copy(bits.palette.begin(), bits.palette.end(), palette.entries);
    bitmap.get()->keep(gp.GdipSetImagePalette(bitmap.get()->native, palette.get()));
  }
  return bitmap;
}

Ref<AGImage> loadImageFile(const wchar_t* path) noexcept {
  const gdiplus::Session session;
  if (!session || !path) return {};
  const gdiplus::Table& gp = gdiplus::flat();
  const auto bitmap = gdiplus::makeWhole<gdiplus::OwnedBitmap>(
      [&](Gdiplus::GpBitmap** made) { return gp.GdipCreateBitmapFromFile(path, made); });
  if (!bitmap) return {};
  Gdiplus::GpBitmap* const native = bitmap.get()->native;
  UINT width = 0;
  UINT height = 0;
  Gdiplus::PixelFormat format = 0;
  if (gp.GdipGetImageWidth(native, &width) != Gdiplus::Ok || gp.GdipGetImageHeight(native, &height) != Gdiplus::Ok ||
      gp.GdipGetImagePixelFormat(native, &format) != Gdiplus::Ok || width > INT32_MAX || height > INT32_MAX) {
    return {};
  }
  const bool isIndexed = format & PixelFormatIndexed;
  const bool hasAlpha = format & PixelFormatAlpha;
  const i32 bits = isIndexed ? static_cast<i32>(format >> 8 & 255) : 0;
  const ColorModel model = isIndexed ? ColorModel::Indexed : hasAlpha ? ColorModel::Argb : ColorModel::Rgb;
  Ref<AGImage> image = AGImage::create(static_cast<i32>(width), static_cast<i32>(height), model, bits);
  if (!image || (isIndexed && !copyPalette(gp, native, *image))) return {};
  Gdiplus::BitmapData data = {};
  const Gdiplus::Rect whole(0, 0, static_cast<INT>(width), static_cast<INT>(height));
  if (gp.GdipBitmapLockBits(native, &whole, Gdiplus::ImageLockModeRead, formatOf(image->bitsPerPixel(), hasAlpha),
                            &data) != Gdiplus::Ok) {
    return {};
  }
  const i64 rowBytes = (i64{image->width()} * image->bitsPerPixel() + 7) / 8;
  for (i32 y = 0; y < image->height(); ++y) {
    std::memcpy(image->row(y), static_cast<const u8*>(data.Scan0) + static_cast<std::ptrdiff_t>(data.Stride) * y,
                static_cast<std::size_t>(rowBytes));
  }
  gp.GdipBitmapUnlockBits(native, &data);
  return image;
}

bool saveImageFile(const ImageBits& bits, const wchar_t* path, ImageFile kind) {
  const gdiplus::Session session;
  if (!session || !path || !*path) return false;
  PartFile unfinished(path);
  if (!unfinished) return false;
  bool isSaved = false;
  {
    const gdiplus::OwnedBitmap bitmap = bitmapOver(bits);
    isSaved = bitmap && gdiplus::flat().GdipSaveImageToFile(bitmap.get()->native, unfinished.path(),
                                                            kind == ImageFile::Png ? &kPngEncoder : &kBmpEncoder,
                                                            nullptr) == Gdiplus::Ok;
  }
  return isSaved && unfinished.takePlace() == 0;
}

}  // namespace corvix
