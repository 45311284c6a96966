// Names of fonts as documents have them, and what they say.
#pragma once

#include "graphics/fonts/FontFinder.h"

#include <span>
#include <string>

namespace corvix {

struct FontName {
  std::wstring family;
  i32 weight = 0;  // 0: the name does not say
  bool italic = false;
};

// Takes a name apart: "ABCDEF+Arial-BoldItalicMT" is the family "Arial", bold and italic. A style that is not known is
// part of the family.
FontName parseFontName(std::wstring_view name);

// What stands for the standard fonts of PDF and for the usual ones by other names.
struct KnownFamily {
  const wchar_t* name;  // without blanks
  u32 traits;
  const wchar_t* families;  // to be tried in turn, separated by '|'
};

// As documents write families: letter case and blanks do not matter.
bool isSameFamily(std::wstring_view a, std::wstring_view b) noexcept;

// Null when the family is none of these, nor one of those that stand for them.
const KnownFamily* findKnownFamily(std::wstring_view family) noexcept;

// Families to try for what a font is like, separated by '|'.
const wchar_t* familiesLike(u32 traits) noexcept;

// The character of a byte in Windows-1252.
u32 codePointOf1252(u32 code) noexcept;

}  // namespace corvix
