// Texts of others on their way to a terminal.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace corvix::xmlbinc {

// So many letters of the text and "..." for the others, with U+FFFD for what a terminal would take as an order:
// controls, escape sequences, marks of direction.
inline std::wstring harmless(std::wstring_view text, std::size_t mostLetters) {
  constexpr std::pair<wchar_t, wchar_t> kOrders[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C},
                                                     {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069},
                                                     {0xFEFF, 0xFEFF}};
  std::wstring shown(text.substr(0, mostLetters));
  std::replace_if(
      shown.begin(), shown.end(),
      [&](wchar_t c) {
        return std::any_of(std::begin(kOrders), std::end(kOrders),
                           [c](const auto& range) { return c >= range.first && c <= range.second; });
      },
      L'\xFFFD');
  if (text.size() <= mostLetters) return shown;
  if (!shown.empty() && shown.back() >= 0xD800 && shown.back() < 0xDC00) shown.pop_back();  // half a character
  return shown + L"...";
}

}  // namespace corvix::xmlbinc
