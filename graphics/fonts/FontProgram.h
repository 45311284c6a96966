// IFMFontProgram: what a font file knows of its glyphs besides characters, found by query<IFMFontProgram>(font): for
// documents that bring a font along and name its glyphs by codes or names. Glyphs are the numbers of IFMFontSource.
// [one thread at a time]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IFMFontProgram : public IBTransportable {
  CORVIX_IDENTITY(IFMFontProgram, 0x2A0BEF40, 0x8B125073, 0xD4B9300A, 0x0D3906EB, IBTransportable)

 public:
  virtual u32 glyphCount() = 0;

  // By the file's own encoding: a byte of the document's text; with character collections ("CID") the number in the
  // collection. 0 when there is none.
  virtual u32 glyphOfCode(u32 code) = 0;

  // By a name such as "Aacute", in ASCII; 0 when there is none, also in files that do not name their glyphs.
  virtual u32 glyphOfName(const char* name) = 0;
};

}  // namespace corvix
