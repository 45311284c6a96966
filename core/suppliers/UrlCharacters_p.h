// Which characters may stand as they are in which component of a location.
#pragma once

#include "core/suppliers/UrlRecord.h"

#include <array>
#include <string>

namespace corvix::url {

namespace characters {

constexpr u16 bit(UrlPart part) noexcept { return static_cast<u16>(1u << static_cast<u32>(part)); }

template <class... Part>
constexpr u16 bits(Part... part) noexcept {
  return static_cast<u16>((0 | ... | bit(part)));
}

constexpr u16 kFileNames = bits(UrlPart::FileName, UrlPart::BaseName);
constexpr u16 kPaths = bits(UrlPart::Path, UrlPart::Directory);
constexpr u16 kAccess = bits(UrlPart::Authority, UrlPart::UserInfo, UrlPart::Password, UrlPart::Host);
constexpr u16 kBehind = bits(UrlPart::Query, UrlPart::Fragment);
constexpr u16 kSegments = kFileNames | kPaths | kBehind | bits(UrlPart::Extension, UrlPart::Parameters);
constexpr u16 kTexts = kSegments | kAccess | bit(UrlPart::User);

struct Row {
  const char* characters;
  u16 parts;
};

constexpr Row kRows[] = {
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz",
     static_cast<u16>(kTexts | bits(UrlPart::Scheme, UrlPart::Drive))},
    {"0123456789", static_cast<u16>(kTexts | bits(UrlPart::Scheme, UrlPart::Port))},
    {"+", static_cast<u16>(kTexts | bit(UrlPart::Scheme))},
    {"-", static_cast<u16>(kTexts | bit(UrlPart::Scheme))},
    {".", static_cast<u16>((kTexts | bit(UrlPart::Scheme)) & ~bit(UrlPart::Extension))},
    {"_~!$&'()*,=", kTexts},
    {";", static_cast<u16>(kTexts & ~(kFileNames | bit(UrlPart::Extension)))},
    {":", static_cast<u16>(kSegments | kAccess | bit(UrlPart::Drive))},
    {"|", bit(UrlPart::Drive)},
    {"@", static_cast<u16>(kSegments | bit(UrlPart::Authority))},
    {"/", kPaths | kBehind},
    {"?", kBehind},
    {"[]", bits(UrlPart::Authority, UrlPart::Host)},
};

constexpr std::array<u16, 128> kPartsOf = [] {
  std::array<u16, 128> table{};
  for (const Row& row : kRows) {
    for (const char* c = row.characters; *c; ++c) table[static_cast<unsigned char>(*c)] = row.parts;
  }
  return table;
}();

}  // namespace characters

constexpr bool mayStand(wchar_t c, UrlPart part) noexcept {
  return c < 128 && (characters::kPartsOf[c] & characters::bit(part)) != 0;
}

constexpr int hexDigit(wchar_t c) noexcept {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  return -1;
}

// The byte that an escape at `text[at]` stands for, or -1 if there is none.
constexpr int escapedByte(std::wstring_view text, std::size_t at) noexcept {
  if (text.size() - at < 3 || text[at] != L'%') return -1;
  const int high = hexDigit(text[at + 1]);
  const int low = hexDigit(text[at + 2]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

enum class Escapes {
  Keep,    // the text is part of a location already
  Escape,  // the text is plain: a "%" is a "%"
};

// Appends a text, with what may not stand in the part as escapes of its UTF-8.
void appendEscaped(std::wstring& to, std::wstring_view text, UrlPart part, Escapes escapes);

// The length of a drive at the start of a "file" location's path, with the slash before it; 0 without one.
constexpr u32 driveLength(std::wstring_view path) noexcept {
  const std::size_t at = !path.empty() && path[0] == L'/' ? 1 : 0;
  if (path.size() < at + 2) return 0;
  const wchar_t letter = path[at] | 0x20;
  if (letter < L'a' || letter > L'z' || (path[at + 1] != L':' && path[at + 1] != L'|')) return 0;
  return path.size() == at + 2 || path[at + 2] == L'/' ? static_cast<u32>(at + 2) : 0;
}

// In any letter case; `lowered` is lower case ASCII.
constexpr bool equalsAnyCase(std::wstring_view text, std::wstring_view lowered) noexcept {
  if (text.size() != lowered.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const wchar_t c = text[i] >= L'A' && text[i] <= L'Z' ? static_cast<wchar_t>(text[i] | 0x20) : text[i];
    if (c != lowered[i]) return false;
  }
  return true;
}

}  // namespace corvix::url
