// The hash of every name-keyed table. It is part of the contract: buckets, and with them the order in which
// tables are walked, follow from it. [any thread]
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

extern "C" CORVIX_API const u32 StringMixNumber[16];

namespace text {

// Private copies of the sixteen numbers, so that the library's own loops need no look through an import.
inline constexpr u32 kMixNumbers[16] = {0x204E9, 0x726CB, 0xD628F, 0x28C61, 0x7FB17, 0x2C825, 0xCEA07, 0x89D71,
                                        0x3BF53, 0x7D935, 0xA40AD, 0xB15F9, 0xC37DB, 0x151BD, 0x4739F, 0xCAE43};

// One step of the hash: `unit` stands at `position`, counted from 0.
constexpr u32 mixHash(u32 hash, u32 unit, u32 position) noexcept {
  return kMixNumbers[(unit ^ position) & 15] * ((unit << 6) ^ unit ^ hash);
}

// A byte counts as a signed value, a UTF-16 unit as an unsigned one.
constexpr u32 hashUnit(char c) noexcept { return static_cast<u32>(static_cast<signed char>(c)); }
constexpr u32 hashUnit(wchar_t c) noexcept { return static_cast<u16>(c); }

// Goes on from `hash`, which `start` units before the text have made.
template <class Char>
constexpr u32 stringHash(const Char* text, std::size_t length, u32 hash = 0, u32 start = 0) noexcept {
  for (std::size_t i = 0; i < length; ++i) hash = mixHash(hash, hashUnit(text[i]), start + static_cast<u32>(i));
  return hash;
}

}  // namespace text
}  // namespace corvix
