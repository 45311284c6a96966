// BMP and PNG files through GDI+'s codecs.
#pragma once

#include "graphics/gdiplus/Wrappers_p.h"
#include "graphics/images/AGImage_p.h"
#include "graphics/images/ImageBits_p.h"

namespace corvix {

Ref<AGImage> loadImageFile(const wchar_t* path) noexcept;

// Throws std::bad_alloc.
bool saveImageFile(const ImageBits& bits, const wchar_t* path, ImageFile kind);

// A GDI+ bitmap over the bits, which must outlive it.
gdiplus::OwnedBitmap bitmapOver(const ImageBits& bits);

}  // namespace corvix
