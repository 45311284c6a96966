#include "graphics/text/Characters_p.h"

#include <algorithm>
#include <iterator>

#include <windows.h>

namespace corvix {

namespace {

struct Range {
  u32 first;
  u32 last;
};
constexpr Range kLeftOut[] = {{0, 0x1F},        {0x7F, 0x9F},     {0xAD, 0xAD},      {0x34F, 0x34F},   {0x61C, 0x61C},
                              {0x180B, 0x180F}, {0x200B, 0x200F}, {0x2028, 0x202E},  {0x2060, 0x206F}, {0xFE00, 0xFE0F},
                              {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF}};
static_assert(std::is_sorted(std::begin(kLeftOut), std::end(kLeftOut),
                             [](const Range& a, const Range& b) { return a.last < b.first; }));

}  // namespace

bool isLeftOut(u32 codePoint) noexcept {
  const auto* const range = std::lower_bound(std::begin(kLeftOut), std::end(kLeftOut), codePoint,
                                             [](const Range& one, u32 wanted) { return one.last < wanted; });
  return range != std::end(kLeftOut) && codePoint >= range->first;
}

bool isMark(u32 codePoint) noexcept {
  constexpr u32 kFirst = 0x300;  // spacing accents before it stand alone
  if (codePoint < kFirst || codePoint > 0xFFFF) return false;
  const auto unit = static_cast<wchar_t>(codePoint);
  WORD type = 0;
  return GetStringTypeW(CT_CTYPE3, &unit, 1, &type) && (type & C3_NONSPACING);
}

u32 composed(u32 base, u32 mark) noexcept {
  if (base > 0xFFFF || mark > 0xFFFF) return 0;
  const wchar_t both[2] = {static_cast<wchar_t>(base), static_cast<wchar_t>(mark)};
  wchar_t one[4];
  return FoldStringW(MAP_PRECOMPOSED, both, 2, one, static_cast<int>(std::size(one))) == 1 ? static_cast<u16>(one[0])
                                                                                           : 0;
}

}  // namespace corvix
