// SystemFont: a font of the system, drawn with through GDI's own glyphs. One size is enough: outlines are those of the
// em square, bitmaps are scaled from it.
#pragma once

#include "core/baselib/text/WideString.h"
#include "graphics/fonts/FallbackFonts_p.h"
#include "graphics/gdi/Gdi_p.h"

#include <unordered_map>
#include <vector>

namespace corvix {

class SystemFont final : public IFMFont, public IFMFontSource, public FallbackFonts {
  CORVIX_IDENTITY(SystemFont, 0x2D7E94B1, 0x4A63C05F, 0x9E18D7A2, 0xB5F3064C, IFMFont, IFMFontSource, FallbackFonts)

 public:
  struct Face {
    WideString family;
    i32 weight = 0;  // 0: 400
    bool italic = false;
  };

  SystemFont(Face face, bool isSubstitute) : face_(std::move(face)), isSubstitute_(isSubstitute) {}

  const wchar_t* family() const noexcept override { return face_.family.c_str(); }
  bool isSubstitute() const noexcept override { return isSubstitute_; }
  const Face& face() const noexcept { return face_; }

  FontMetrics metrics() override;
  u32 glyphOf(u32 codePoint) override;
  double advance(u32 glyph) override;
  bool outline(u32 glyph, IGlyphSink& sink) override;
  bool coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) override;

 private:
  static constexpr u32 kFirstPage = 256;

  bool prepare() noexcept;  // selects the font at the size of its em; false when the system has no device for it
  u32 findGlyph(u32 codePoint);
  u32 glyphBeyond(u32 codePoint);  // from the font's own table, for what the system's call cannot name

  Face face_;
  bool isSubstitute_;
  bool isTried_ = false;
  gdi::MemoryDevice device_;
  gdi::OwnFont font_;
  gdi::Selected selected_;  // goes first
  double emPx_ = 0;
  FontMetrics metrics_;
  bool hasBeyond_ = false;
  std::vector<u8> beyond_;               // the table of characters beyond the basic plane; empty: none
  std::unordered_map<u32, u32> glyphs_;  // by character
  std::unordered_map<u32, double> advances_;
};

// The family's name as the system spells it; empty when it is not installed.
WideString installedFamily(std::wstring_view family);

// The first of some families, separated by '|', that is installed.
WideString firstInstalled(const wchar_t* families);

// Some family with a fixed pitch; empty when the system has none.
WideString anyFixedFamily();

struct InstalledFamily {
  WideString name;
  bool isFixed;
};
// All families that can be drawn with, at most 1,000, each once.
std::vector<InstalledFamily> installedFamilies();

}  // namespace corvix
