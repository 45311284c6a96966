#include "tools/xmlbinc/Unicode.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <utf8cpp/utf8.h>

namespace corvix::xmlbinc {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr auto kNameStart = std::to_array<Range>({{':', ':'},
                                                  {'A', 'Z'},
                                                  {'_', '_'},
                                                  {'a', 'z'},
                                                  {0xC0, 0xD6},
                                                  {0xD8, 0xF6},
                                                  {0xF8, 0x2FF},
                                                  {0x370, 0x37D},
                                                  {0x37F, 0x1FFF},
                                                  {0x200C, 0x200D},
                                                  {0x2070, 0x218F},
                                                  {0x2C00, 0x2FEF},
                                                  {0x3001, 0xD7FF},
                                                  {0xF900, 0xFDCF},
                                                  {0xFDF0, 0xFFFD},
                                                  {0x10000, 0xEFFFF}});

constexpr auto kNameAlso =
    std::to_array<Range>({{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}});

template <typename Ranges>
bool within(const Ranges& ranges, char32_t c) {
  return std::any_of(ranges.begin(), ranges.end(), [c](const Range& r) { return r.first <= c && c <= r.last; });
}

}  // namespace

bool isXmlChar(char32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c < 0xD800 || (c >= 0xE000 && c <= 0x10FFFF && c != 0xFFFE && c != 0xFFFF);
}

bool isXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool isXmlSpace(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return isXmlSpace(c); });
}

bool isXmlName(std::string_view utf8) {
  for (auto at = utf8.begin(); at != utf8.end();) {
    const bool first = at == utf8.begin();
    const char32_t c = utf8::next(at, utf8.end());
    if (!within(kNameStart, c) && (first || !within(kNameAlso, c))) return false;
  }
  return !utf8.empty();
}

std::string lowered(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
  }
  return lower;
}

void appendUtf8(char32_t c, std::string& utf8) { utf8::append(c, std::back_inserter(utf8)); }

std::u16string toUtf16(std::string_view utf8) {
  std::u16string utf16;
  utf8::utf8to16(utf8.begin(), utf8.end(), std::back_inserter(utf16));
  return utf16;
}

std::optional<std::string> toUtf8(std::u16string_view utf16) {
  std::string utf8;
  try {
    utf8::utf16to8(utf16.begin(), utf16.end(), std::back_inserter(utf8));
  } catch (const utf8::exception&) {
    return std::nullopt;
  }
  return utf8;
}

std::string quoted(std::u16string_view utf16) {
  constexpr std::size_t kLongest = 60;
  std::string text = "\"";
  for (std::size_t i = 0; i < utf16.size(); ++i) {
    if (i >= kLongest) return text + "...\"";
    const char16_t unit = utf16[i];
    if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < utf16.size() && (utf16[i + 1] & 0xFC00) == 0xDC00) {
      text += *toUtf8(utf16.substr(i, 2));
      ++i;
    } else if (unit < 0x20 || unit == 0x7F || (unit & 0xF800) == 0xD800 || unit >= 0xFFFE) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04X", static_cast<unsigned>(unit));
      text += escape.data();
    } else {
      appendUtf8(unit, text);
    }
  }
  return text + "\"";
}

std::string quoted(std::string_view utf8) { return quoted(toUtf16(utf8)); }

}  // namespace corvix::xmlbinc
