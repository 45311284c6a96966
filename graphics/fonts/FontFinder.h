// Fonts by what a document knows of them: sides of font creators and of the font machine, found by query.
//
//   const auto machine = createObject<IFMFontChooser>(manager, L"IFMFontMachine.Instance");
//   FontRequest wanted;
//   wanted.family = L"ABCDEF+Helvetica-BoldOblique";
//   const auto font = Ref<IFMFont>::adopt(machine->createFontFor(wanted));
#pragma once

#include "graphics/fonts/FontMachine.h"

namespace corvix {

class IBStream;

enum class FontKind : i32 { Unknown, Type1, TrueType, Type0, Type3 };

namespace font_trait {
constexpr u32 kFixed = 1;
constexpr u32 kSerif = 2;
constexpr u32 kSymbolic = 4;
}  // namespace font_trait

// Everything but the family may stay as it is.
struct FontRequest {
  // As the document has it: a subset prefix ("ABCDEF+") is dropped, "Family-BoldItalic" and "Family,Bold" are taken
  // apart, and the fourteen standard fonts of PDF are known. Null counts as empty.
  const wchar_t* family = nullptr;
  i32 weight = 0;  // 100 to 900; 0: as the family says, else 400
  bool italic = false;
  FontKind kind = FontKind::Unknown;
  u32 traits = 0;               // of font_trait, beside what the family says
  IBStream* program = nullptr;  // a font file, for creators that read some; read from its beginning
  const u16* widths =
      nullptr;  // in thousandths of an em, for `widthCount` characters of Windows-1252 from `firstCode` on
  u32 firstCode = 0;
  u32 widthCount = 0;
};

// Beside IFMFontCreator.
class IFMFontFinder : public IBTransportable {
  CORVIX_IDENTITY(IFMFontFinder, 0x51F7A93C, 0x4BE28D06, 0x97C4305E, 0xD86A1BF2, IBTransportable)

 public:
  // A new font, owned by the caller; null when this one has none that fits.
  virtual IFMFont* createFontFor(const FontRequest& request) = 0;

  // A new font that has the character, as like the given one (null: any) as can be; null when this one knows none.
  virtual IFMFont* fontWithGlyph(u32 codePoint, IFMFont* like) = 0;
};

// Beside IFMFontMachine; only the library makes one. Asked are: creators that were added, the last first; those that
// plug-ins declare as "FontCreator." and a name, by their order; the system's fonts; and a last resort that never
// refuses. Creators without IFMFontFinder are asked for the family alone. A creator may ask the machine while it is
// asked: it is passed over then, so that it gets what there would be without it.
class IFMFontChooser : public IBTransportable {
  CORVIX_IDENTITY(IFMFontChooser, 0xC2604E9D, 0x438BF17A, 0x85A9D3C6, 0x7E1F2B04, IBTransportable)

 public:
  // Never null while there is memory.
  virtual IFMFont* createFontFor(const FontRequest& request) = 0;

  // Never null likewise: the last resort draws a box with the character's code.
  virtual IFMFont* fontWithGlyph(u32 codePoint, IFMFont* like) = 0;

  // Gives up the creator that was added last, if it was added more than once; false when it was not.
  virtual bool removeCreator(IFMFontCreator* creator) = 0;
};

}  // namespace corvix
