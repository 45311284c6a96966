// Text on any drawing context, in the fill colour. Characters stand one behind the other as the font's advances say,
// combining marks on the character before. There is no kerning, no shaping and no order from right to left:
// whoever works that out draws the glyphs by their places.
//
// `size` is that of the em in the text's own coordinates, whose origin is where the text begins on its baseline, y
// downwards; `textToUser` places them. The context's clip, origin and transform apply as to every drawing. Upright text
// at reading sizes is drawn pixel by pixel, as fine as the user's setting "AASize" says; other text as filled outlines.
// False, with as little drawn as may be, when nothing is attached, a number is not finite, the size is not above 0,
// memory is short, or a font throws, which the log tells. A glyph that its font does not give (IFMFontSource answers
// false) is left out: the others are drawn, and the answer is false, too. [the context's and the font's thread]
#pragma once

#include "graphics/IAGDC.h"
#include "graphics/fonts/FontMachine.h"

namespace corvix {

// A glyph of a font and where it stands, in the text's coordinates.
struct GlyphPlace {
  u32 glyph;
  double x;
  double y;
};

// `count` units of UTF-16. A character that the font has not is drawn with a font that has it, at last as a box with
// its code; control characters, joiners and variation selectors are left out, half a surrogate pair is U+FFFD. `end`,
// if it is not null, gets the place behind the text in the text's coordinates.
CORVIX_API bool drawText(IAGDC& context, IFMFont& font, double size, const Matrix& textToUser, const wchar_t* text,
                         i32 count, Point* end = nullptr);

// Glyphs by the font's own numbers: query<IFMFontSource>(font) tells them.
CORVIX_API bool drawGlyphs(IAGDC& context, IFMFont& font, double size, const Matrix& textToUser,
                           const GlyphPlace* glyphs, i32 count);

// Narrows the clip to the inside of the text's outlines; where it answers false, the clip is as it was.
CORVIX_API bool clipText(IAGDC& context, IFMFont& font, double size, const Matrix& textToUser, const wchar_t* text,
                         i32 count);

// How far `drawText` would come; 0 for what it would refuse.
CORVIX_API double textWidth(IFMFont& font, double size, const wchar_t* text, i32 count);

}  // namespace corvix
