// Fonts that stand in for others: a font stretched to the widths that were asked for, and the box of last resort.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/text/WideString.h"
#include "graphics/fonts/FallbackFonts_p.h"
#include "graphics/fonts/FontFinder.h"

#include <unordered_map>

namespace corvix {

// Every glyph of another font, as wide as a document says.
class StretchedFont final : public IFMFont, public IFMFontSource, public FallbackFonts {
  CORVIX_IDENTITY(StretchedFont, 0x95B0E7C2, 0x4D16A83F, 0x8A7C21E9, 0xF04D5B36, IFMFont, IFMFontSource, FallbackFonts)

 public:
  // `font` must have IFMFontSource.
  StretchedFont(Ref<IFMFont> font, const FontRequest& request);

  const wchar_t* family() const noexcept override { return font_->family(); }
  bool isSubstitute() const noexcept override { return true; }
  FontMetrics metrics() override { return source_.metrics(); }
  u32 glyphOf(u32 codePoint) override { return source_.glyphOf(codePoint); }
  double advance(u32 glyph) override;
  bool outline(u32 glyph, IGlyphSink& sink) override;
  bool coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) override;

 private:
  double stretchOf(u32 glyph) const;  // 1: as it is

  Ref<IFMFont> font_;
  IFMFontSource& source_;
  std::unordered_map<u32, double> widths_;  // in ems, by glyph
};

// A font that has every character: a box with the character's code in it.
class BoxFont final : public IFMFont, public IFMFontSource, public FallbackFonts {
  CORVIX_IDENTITY(BoxFont, 0x3A6C18F5, 0x47D9B20E, 0xB6E5709D, 0x18C24FA7, IFMFont, IFMFontSource, FallbackFonts)

 public:
  const wchar_t* family() const noexcept override { return L""; }
  bool isSubstitute() const noexcept override { return true; }
  FontMetrics metrics() override;
  u32 glyphOf(u32 codePoint) override { return codePoint <= 0x10FFFF ? codePoint : 0; }
  double advance(u32 glyph) override;
  bool outline(u32 glyph, IGlyphSink& sink) override;
  bool coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) override;
};

}  // namespace corvix
