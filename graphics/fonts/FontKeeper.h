// IFMFontKeeper: beside IFMFontSource, for fonts of other modules. Drawing leaves its notes with the font: under which
// number its glyphs are kept, which fonts helped it out. A font without this is drawn as well, only all its masks are
// made anew for every text. [one thread at a time]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IFMFontKeeper : public IBTransportable {
  CORVIX_IDENTITY(IFMFontKeeper, 0x30EC01AA, 0x1FB4DCB6, 0x121A4F93, 0x2FE84967, IBTransportable)

 public:
  // Null at first, then what was given to `keep` last. Adds no reference.
  virtual IBSmartObject* kept() = 0;

  // Takes a reference of its own and lets go of what it kept, at the latest when the font goes; null for nothing.
  virtual void keep(IBSmartObject* object) = 0;
};

}  // namespace corvix
