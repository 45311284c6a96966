// IAGImage: pixels in memory that an IAGDC draws. Rows run from the top and are padded to 32 bits, as those of the
// system's bitmaps are. Made by `IAGDC::createImage`; belongs to one thread at a time.
#pragma once

#include "core/baselib/objects/SmartObject.h"
#include "graphics/Color.h"

namespace corvix {

class IAGDC;

enum class ColorModel : i32 {
  Indexed,  // 1, 2, 4 or 8 bits, the leftmost pixel in the highest bits; colours from the palette
  Gray,     // 8 bits, 0 is black
  Rgb,      // 24 bits: blue, green, red
  Argb,     // 32 bits: blue, green, red, alpha; not multiplied by alpha
  Cmyk,     // 32 bits: cyan, magenta, yellow, black; 255 is full ink
};

enum class ImageFile : i32 { Bmp, Png };

class IAGImage : public BSmartObject {
  CORVIX_IDENTITY(IAGImage, 0x7E03A5D2, 0x4B96C18F, 0xA8D2703E, 0x51C9F64B, BSmartObject)

 public:
  virtual i32 width() const noexcept = 0;
  virtual i32 height() const noexcept = 0;
  virtual ColorModel colorModel() const noexcept = 0;
  virtual i32 bitsPerPixel() const noexcept = 0;
  virtual i32 strideBytes() const noexcept = 0;

  // The pixels of the row `y`, to read and write; null outside the image. Row 0 is followed by all the others.
  virtual u8* row(i32 y) noexcept = 0;

  // The palette of an indexed image: a grey ramp at first. `setPalette` takes up to as many colours as the pixels can
  // name; those it does not get are opaque black. False for images without palette and for counts out of range.
  virtual bool setPalette(const Color* colors, i32 count) noexcept = 0;
  virtual const Color* palette() const noexcept = 0;
  virtual i32 paletteSize() const noexcept = 0;

  // One pixel as a colour, CMYK converted as the user's settings say. False outside the image.
  virtual bool pixelColor(i32 x, i32 y, Color* color) const noexcept = 0;

  // A new image of the same pixels, owned by the caller; to Rgb, Argb and Gray only. Null when memory is short.
  virtual IAGImage* convertTo(ColorModel model) const noexcept = 0;

  // Copies what a context shows, from (x, y) on; where it shows nothing the pixels stay. Rgb and Argb only.
  virtual bool captureFrom(IAGDC& context, i32 x, i32 y) noexcept = 0;

  // Replaces this image by that of a BMP or PNG file. False, with the image as it was, when the file cannot be read
  // or is none.
  virtual bool loadFile(const wchar_t* path) noexcept = 0;

  // Writes a file; an older one of that name is replaced only when the new one is complete. CMYK and 2-bit images are
  // written in RGB.
  virtual bool saveFile(const wchar_t* path, ImageFile kind) const noexcept = 0;
};

}  // namespace corvix
