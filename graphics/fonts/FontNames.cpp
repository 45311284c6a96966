#include "graphics/fonts/FontNames_p.h"

#include <algorithm>
#include <iterator>

namespace corvix {

namespace {

struct StyleWord {
  std::wstring_view word;
  i32 weight;
  bool italic;
};

// Longer words before those that they begin with.
constexpr StyleWord kStyleWords[] = {
    {L"semibold", 600, false},   {L"demibold", 600, false},   {L"extrabold", 800, false}, {L"ultrabold", 800, false},
    {L"extralight", 200, false}, {L"ultralight", 200, false}, {L"bold", 700, false},      {L"italic", 0, true},
    {L"oblique", 0, true},       {L"regular", 0, false},      {L"roman", 0, false},       {L"normal", 0, false},
    {L"book", 0, false},         {L"medium", 500, false},     {L"light", 300, false},     {L"thin", 100, false},
    {L"black", 900, false},      {L"heavy", 900, false},      {L"demi", 600, false},      {L"psmt", 0, false},
    {L"mt", 0, false},           {L"ps", 0, false},
};

constexpr wchar_t kSansFamilies[] = L"Helvetica|Arial|Nimbus Sans|Liberation Sans|DejaVu Sans|Tahoma";
constexpr wchar_t kSerifFamilies[] = L"Times New Roman|Times|Nimbus Roman|Liberation Serif|DejaVu Serif|Georgia";
constexpr wchar_t kFixedFamilies[] =
    L"Courier New|Nimbus Mono PS|Liberation Mono|DejaVu Sans Mono|Consolas|Lucida Console|Courier Std";
constexpr wchar_t kSymbolFamilies[] = L"Symbol|Standard Symbols PS|Segoe UI Symbol|DejaVu Sans";
constexpr wchar_t kDingbatFamilies[] = L"Wingdings|D050000L|Segoe UI Symbol|DejaVu Sans";

constexpr KnownFamily kKnown[] = {
    {L"arial", 0, kSansFamilies},
    {L"courier", font_trait::kFixed, kFixedFamilies},
    {L"couriernew", font_trait::kFixed, kFixedFamilies},
    {L"couriernewps", font_trait::kFixed, kFixedFamilies},
    {L"helvetica", 0, kSansFamilies},
    {L"symbol", font_trait::kSymbolic, kSymbolFamilies},
    {L"times", font_trait::kSerif, kSerifFamilies},
    {L"timesnewroman", font_trait::kSerif, kSerifFamilies},
    {L"timesnewromanps", font_trait::kSerif, kSerifFamilies},
    {L"zapfdingbats", font_trait::kSymbolic, kDingbatFamilies},
};

// Each family of a list is known to be like the others; the first list counts.
constexpr KnownFamily kLists[] = {
    {nullptr, 0, kSansFamilies},
    {nullptr, font_trait::kSerif, kSerifFamilies},
    {nullptr, font_trait::kFixed, kFixedFamilies},
    {nullptr, font_trait::kSymbolic, kSymbolFamilies},
    {nullptr, font_trait::kSymbolic, kDingbatFamilies},
};

constexpr wchar_t lower(wchar_t unit) noexcept {
  return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + (L'a' - L'A')) : unit;
}

std::wstring folded(std::wstring_view text) {
  std::wstring plain;
  for (const wchar_t unit : text) {
    if (unit != L' ') plain += lower(unit);
  }
  return plain;
}

// "BoldItalicMT": true when it is nothing but words of style.
bool readStyle(std::wstring_view text, FontName& name) {
  const std::wstring style = folded(text);
  FontName read = name;
  std::size_t at = 0;
  while (at < style.size()) {
    const auto* const found = std::find_if(std::begin(kStyleWords), std::end(kStyleWords), [&](const StyleWord& one) {
      return std::wstring_view(style).substr(at, one.word.size()) == one.word;
    });
    if (found == std::end(kStyleWords)) return false;
    if (found->weight) read.weight = found->weight;
    read.italic = read.italic || found->italic;
    at += found->word.size();
  }
  name = read;
  return !style.empty();
}

// "ABCDEF+"
bool hasSubsetPrefix(std::wstring_view name) noexcept {
  constexpr std::size_t kLetters = 6;
  return name.size() > kLetters + 1 && name[kLetters] == L'+' &&
         std::all_of(name.begin(), name.begin() + kLetters, [](wchar_t c) { return c >= L'A' && c <= L'Z'; });
}

// "ArialMT" is Arial: the maker's letters are no part of a family that is known without them.
void dropMaker(std::wstring& family) {
  for (const std::wstring_view maker : {L"PSMT", L"MT", L"PS"}) {
    if (family.size() <= maker.size() || !std::wstring_view(family).ends_with(maker)) continue;
    const std::wstring shorter = family.substr(0, family.size() - maker.size());
    if (findKnownFamily(shorter)) {
      family = shorter;
      return;
    }
  }
}

}  // namespace

FontName parseFontName(std::wstring_view name) {
  if (hasSubsetPrefix(name)) name.remove_prefix(name.find(L'+') + 1);
  FontName parsed;
  std::size_t at = name.find(L',');
  if (at == std::wstring_view::npos) at = name.rfind(L'-');
  if (at != std::wstring_view::npos && at > 0 && readStyle(name.substr(at + 1), parsed)) name = name.substr(0, at);
  parsed.family = name;
  dropMaker(parsed.family);
  return parsed;
}

bool isSameFamily(std::wstring_view a, std::wstring_view b) noexcept {
  for (;;) {
    while (!a.empty() && a.front() == L' ') a.remove_prefix(1);
    while (!b.empty() && b.front() == L' ') b.remove_prefix(1);
    if (a.empty() || b.empty()) return a.empty() && b.empty();
    if (lower(a.front()) != lower(b.front())) return false;
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
}

const KnownFamily* findKnownFamily(std::wstring_view family) noexcept {
  for (const KnownFamily& known : kKnown) {
    if (isSameFamily(family, known.name)) return &known;
  }
  for (const KnownFamily& list : kLists) {
    for (std::wstring_view left = list.families; !left.empty();) {
      const std::size_t end = std::min(left.find(L'|'), left.size());
      if (isSameFamily(family, left.substr(0, end))) return &list;
      left.remove_prefix(std::min(end + 1, left.size()));
    }
  }
  return nullptr;
}

const wchar_t* familiesLike(u32 traits) noexcept {
  if (traits & font_trait::kFixed) return kFixedFamilies;
  if (traits & font_trait::kSerif) return kSerifFamilies;
  return kSansFamilies;
}

u32 codePointOf1252(u32 code) noexcept {
  constexpr u16 kFrom80[32] = {0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
                               0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                               0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  return code >= 0x80 && code < 0xA0 ? kFrom80[code - 0x80] : code;
}

}  // namespace corvix
