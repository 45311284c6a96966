// What the beginning of an image file says of its size and of which way up it is, so that nothing larger than wanted is
// ever decoded.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

enum class ImageKind : i32 { Png, Bmp, Jpeg, Tiff };

struct ImageSize {
  u32 width = 0;
  u32 height = 0;
};

struct ImageHead {
  ImageSize size;       // of a TIFF the largest of its pages
  u32 pages = 1;        // at most 4096
  u32 orientation = 1;  // of a JPEG as Exif counts it, 1 to 8: where the first row and column of pixels are to be seen
};

// False when the bytes are no such file, as far as one must read to know its size.
bool readImageHead(ImageKind kind, const u8* bytes, u32 count, ImageHead& head) noexcept;

}  // namespace corvix
