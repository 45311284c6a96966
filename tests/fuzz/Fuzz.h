// What the targets of the fuzzer share. A target is a function that takes any bytes; what must hold is `require`d.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace corvix::fuzz {

using Bytes = std::basic_string_view<std::uint8_t>;

void descriptors(Bytes bytes);
void xmlText(Bytes bytes);
void modules(Bytes bytes);
void locations(Bytes bytes);
void decoders(Bytes bytes);
void fonts(Bytes bytes);
void images(Bytes bytes);
void settingTexts(Bytes bytes);
void texts(Bytes bytes);

// Ends the program, as a finding of the fuzzer, when a property does not hold.
inline void require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", property);
  std::abort();
}

// The first byte, taken off; 0 when there is none.
inline unsigned take(Bytes& bytes) {
  if (bytes.empty()) return 0;
  const unsigned byte = bytes[0];
  bytes.remove_prefix(1);
  return byte;
}

// ASCII as it is, a byte above brings the next two as one unit: plain words can be seeds, and every text can come.
inline std::wstring textOf(Bytes bytes) {
  std::wstring text;
  while (!bytes.empty()) {
    unsigned unit = take(bytes);
    if (unit >= 0x80) unit = take(bytes) << 8, unit |= take(bytes);
    text += static_cast<wchar_t>(unit);
  }
  return text;
}

// Up to the next line end, which is taken off too.
inline std::wstring takeLine(std::wstring_view& text) {
  const std::size_t end = text.find(L'\n');
  const std::wstring line(text.substr(0, end));
  text.remove_prefix(end == std::wstring_view::npos ? text.size() : end + 1);
  return line;
}

}  // namespace corvix::fuzz
