// Texts in the user's language, at the time when they are shown.
#pragma once

#include "core/baselib/objects/Ref.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace corvix {

class IBTranslator;

namespace windows {

// For many texts at once.
class Translation {
 public:
  Translation();
  ~Translation();

  // The text itself when nobody has another. `context` is the menu or toolbar that it stands in, or null.
  const wchar_t* of(const wchar_t* text, const wchar_t* context = nullptr) const;

 private:
  Ref<IBTranslator> translator_;
};

const wchar_t* translated(const wchar_t* text, const wchar_t* context = nullptr);
inline const wchar_t* translated(const std::wstring& text) { return translated(text.c_str()); }

// With "%1" and so on for the parts: see shell/language/Sentence.h.
std::wstring sentence(const wchar_t* text, std::initializer_list<std::wstring_view> parts);

}  // namespace windows

}  // namespace corvix
