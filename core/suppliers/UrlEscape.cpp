#include "core/suppliers/UrlCharacters_p.h"

namespace corvix {

namespace url {

namespace {

constexpr bool isLead(u32 unit) noexcept { return (unit & 0xFC00) == 0xD800; }
constexpr bool isTrail(u32 unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

void appendByte(std::wstring& to, u32 byte) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  to += L'%';
  to += kDigits[byte >> 4 & 15];
  to += kDigits[byte & 15];
}

void appendUtf8(std::wstring& to, u32 point) {
  if (point < 0x80) return appendByte(to, point);
  if (point < 0x800) {
    appendByte(to, 0xC0 | point >> 6);
  } else {
    if (point < 0x10000) {
      appendByte(to, 0xE0 | point >> 12);
    } else {
      appendByte(to, 0xF0 | point >> 18);
      appendByte(to, 0x80 | (point >> 12 & 0x3F));
    }
    appendByte(to, 0x80 | (point >> 6 & 0x3F));
  }
  appendByte(to, 0x80 | (point & 0x3F));
}

struct Decoded {
  u32 point;
  std::size_t units;  // of the escaped text; 0 if it is not UTF-8
};

// The character that the escapes at `text[at]` stand for.
Decoded decodeEscapes(std::wstring_view text, std::size_t at) noexcept {
  const int first = escapedByte(text, at);
  if (first < 0) return {0, 0};
  if (first < 0x80) return {static_cast<u32>(first), 3};
  if (first < 0xC2 || first > 0xF4) return {0, 0};
  const u32 more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
  u32 point = static_cast<u32>(first) & (0x3Fu >> more);
  for (u32 i = 1; i <= more; ++i) {
    const std::size_t next = at + i * 3;
    const int byte = next < text.size() ? escapedByte(text, next) : -1;
    if (byte < 0 || (byte & 0xC0) != 0x80) return {0, 0};
    point = point << 6 | (static_cast<u32>(byte) & 0x3F);
  }
  constexpr u32 kLeast[] = {0, 0x80, 0x800, 0x10000};
  if (point < kLeast[more] || point > 0x10FFFF || (point & 0xFFFFF800) == 0xD800) return {0, 0};
  return {point, 3 + more * 3};
}

}  // namespace

void appendEscaped(std::wstring& to, std::wstring_view text, UrlPart part, Escapes escapes) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    u32 point = text[i];
    if (mayStand(text[i], part) || (escapes == Escapes::Keep && escapedByte(text, i) >= 0)) {
      to += text[i];
      continue;
    }
    if (isLead(point) && i + 1 < text.size() && isTrail(text[i + 1])) {
      point = 0x10000 + ((point & 0x3FF) << 10) + (text[++i] & 0x3FFu);
    } else if (isLead(point) || isTrail(point)) {
      point = 0xFFFD;
    }
    appendUtf8(to, point);
  }
}

}  // namespace url

WideString UrlRecord::escape(UrlPart part, std::wstring_view plain) {
  std::wstring escaped;
  escaped.reserve(plain.size());
  url::appendEscaped(escaped, plain, part, url::Escapes::Escape);
  return escaped;
}

WideString UrlRecord::unescape(std::wstring_view escaped) {
  if (escaped.find(L'%') == std::wstring_view::npos) return escaped;
  std::wstring plain;
  plain.reserve(escaped.size());
  for (std::size_t i = 0; i < escaped.size();) {
    const url::Decoded decoded = url::decodeEscapes(escaped, i);
    if (decoded.units == 0) {
      plain += escaped[i++];
      continue;
    }
    i += decoded.units;
    if (decoded.point >= 0x10000) {
      plain += static_cast<wchar_t>(0xD7C0 + (decoded.point >> 10));
      plain += static_cast<wchar_t>(0xDC00 | (decoded.point & 0x3FF));
    } else {
      plain += static_cast<wchar_t>(decoded.point);
    }
  }
  return plain;
}

WideString UrlRecord::escapedText() const {
  std::wstring escaped;
  escaped.reserve(text_.length());
  const auto appendAs = [&](UrlPart wanted, std::wstring_view text) {
    url::appendEscaped(escaped, text, wanted, url::Escapes::Keep);
  };
  const auto append = [&](UrlPart wanted) { appendAs(wanted, part(wanted)); };
  if (has(UrlPart::Scheme)) (escaped += part(UrlPart::Scheme)) += L':';
  if (has(UrlPart::Authority)) {
    escaped += L"//";
    append(UrlPart::Authority);
  }
  // The bar of a drive may stand there alone.
  const u32 drive = has(UrlPart::Drive) ? url::driveLength(part(UrlPart::Path)) : 0;
  escaped += part(UrlPart::Path).substr(0, drive);
  appendAs(UrlPart::Path, part(UrlPart::Path).substr(drive));
  if (has(UrlPart::Query)) {
    escaped += L'?';
    append(UrlPart::Query);
  }
  if (has(UrlPart::Fragment)) {
    escaped += L'#';
    append(UrlPart::Fragment);
  }
  return escaped;
}

}  // namespace corvix
