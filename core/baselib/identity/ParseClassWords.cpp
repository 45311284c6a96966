#include "core/baselib/identity/StypeInfo.h"
#include "core/baselib/text/NumberText.h"

namespace corvix {

std::optional<ClassWords> parseClassWords(const wchar_t* text, std::size_t length) noexcept {
  if (!text) return std::nullopt;
  const wchar_t* const end = text + length;
  u32 words[4];
  for (u32 i = 0; i < 4; ++i) {
    if (i && (text == end || *text++ != L',')) return std::nullopt;
    const text::ScannedInteger number = text::scanInteger({text, static_cast<std::size_t>(end - text)});
    if (!number.end) return std::nullopt;
    words[i] = number.isNegative ? 0u - number.low32 : number.low32;
    text = number.end;
  }
  return ClassWords{words[0], words[1], words[2], words[3]};
}

}  // namespace corvix
