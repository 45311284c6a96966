// FallbackFonts: the fonts that came to help a font with characters that it has not. They go with it.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "graphics/fonts/FontMachine.h"
#include "graphics/fonts/FontSource.h"
#include "graphics/fonts/GlyphCache_p.h"

#include <vector>

namespace corvix {

class FallbackFonts {
  CORVIX_IDENTITY_ROOT(FallbackFonts, 0x0C95E7B3, 0x4F2A61D8, 0x8E7D04C5, 0xD3B6F91A)

 public:
  struct Row {
    Ref<IFMFont> font;
    IFMFontSource* source;
    u32 number;
    bool isLastResort;  // has every character, so nothing may be looked for in it before the machine was asked
  };

  u32 number = nextFontNumber();  // the font's own, in the cache of glyphs
  std::vector<Row> rows;
};

}  // namespace corvix
