#include "tools/corvix/Text.h"

#include "tools/xmlbinc/Harmless.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include <windows.h>

namespace corvix::tool {

std::wstring wide(std::string_view utf8) {
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring text(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), text.data(), size);
  return text;
}

std::string utf8(std::wstring_view text) {
  const int units = static_cast<int>(text.size());
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), units, result.data(), size, nullptr, nullptr);
  return result;
}

std::string utf8(std::u16string_view text) { return utf8(std::wstring(text.begin(), text.end())); }

std::string shown(std::string_view text, std::size_t mostLetters) {
  return utf8(xmlbinc::harmless(wide(text), mostLetters));
}

std::string hexadecimal(std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(value));
  return text;
}

std::string fileNameOf(const std::string& path) { return path.substr(path.find_last_of("\\/") + 1); }

std::size_t distance(std::u16string_view a, std::u16string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i - 1] != b[j - 1]);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
    }
  }
  return row[b.size()];
}

}  // namespace corvix::tool
