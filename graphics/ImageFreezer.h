// IAGImageFreezer: a side of images, found by query<IAGImageFreezer>(image), for those whose pixels are finished. What
// is made of a frozen image for drawing - other colours, fewer pixels - is kept from draw to draw: at most 64 MiB in
// the process, those that were drawn last, until memory is short. [the image's thread]
//
//   if (auto* const freezer = query<IAGImageFreezer>(image.get())) freezer->freeze();
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IAGImageFreezer : public IBTransportable {
  CORVIX_IDENTITY(IAGImageFreezer, 0x2D95C1F7, 0x4E60A83B, 0x9AC3176D, 0xE058B24F, IBTransportable)

 public:
  // From here on nobody writes through pointers that `IAGImage::row` gave before. Asking for a row, `setPalette`,
  // `captureFrom` and `loadFile` thaw the image again: what was kept is dropped, and every draw shows the pixels as
  // they are. False when it is frozen already.
  virtual bool freeze() = 0;
  virtual bool isFrozen() const noexcept = 0;

  // The row `y` to read alone, which does not thaw; null outside the image. Row 0 is followed by all the others.
  virtual const u8* readRow(i32 y) const noexcept = 0;
};

}  // namespace corvix
