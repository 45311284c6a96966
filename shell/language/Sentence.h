// Sentences in the user's language with places for what only the program knows, such as "Page %1 of %2". Each place
// stands once in the program's own sentence; a translation may have them in another order, one that has not just the
// same places is not used. Numbers go in as texts. [shell thread]
#pragma once

#include "shell/language/Translator.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace corvix {

// A bit for each of "%1" to "%9" in the text; bit 0 when one stands there twice.
inline u32 placesIn(std::wstring_view text) noexcept {
  u32 places = 0;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != L'%' || text[i + 1] < L'1' || text[i + 1] > L'9') continue;
    const u32 place = 1u << (text[i + 1] - L'0');
    places |= places & place ? 1u : place;
  }
  return places;
}

// "%1" is the first of the parts; a place that there is no part for stays as it is, and so does what stands in parts.
inline std::wstring fillPlaces(std::wstring_view text, std::initializer_list<std::wstring_view> parts) {
  std::wstring filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t part = text[i] == L'%' && i + 1 < text.size() && text[i + 1] >= L'1'
                                 ? static_cast<std::size_t>(text[i + 1] - L'1')
                                 : parts.size();
    if (part < parts.size() && part < 9) {
      filled += parts.begin()[part];
      ++i;
    } else {
      filled += text[i];
    }
  }
  return filled;
}

// `translator` null: in the program's own language.
inline std::wstring composeSentence(IBTranslator* translator, const wchar_t* text,
                                    std::initializer_list<std::wstring_view> parts) {
  const std::wstring_view own = text ? text : L"", other = translator ? translator->translate(text) : own;
  return fillPlaces(placesIn(other) == placesIn(own) ? other : own, parts);
}

}  // namespace corvix
