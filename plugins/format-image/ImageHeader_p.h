// What the beginning of an image file says of its size, so that nothing larger than wanted is ever decoded.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

enum class ImageKind : i32 { Png, Bmp, Jpeg, Tiff };

struct ImageSize {
  u32 width = 0;
  u32 height = 0;
};

// False when the bytes are no such file, as far as one must read to know its size. Of a TIFF the largest of its pages,
// of which `pages` says how many there are.
bool imageSizeOf(ImageKind kind, const u8* bytes, u32 count, ImageSize& size, u32& pages) noexcept;

}  // namespace corvix
