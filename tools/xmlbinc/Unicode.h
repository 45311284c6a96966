// UTF-8 and UTF-16 texts as XML 1.0 sees them. Functions that take UTF-8 expect it to be valid.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvix::xmlbinc {

bool isXmlChar(char32_t c);
bool isXmlSpace(char c);
bool isXmlSpace(std::string_view text);
bool isXmlName(std::string_view utf8);

/// With small letters for the capital ones of ASCII.
std::string lowered(std::string_view text);

void appendUtf8(char32_t c, std::string& utf8);
std::u16string toUtf16(std::string_view utf8);

/// None if the text has half a surrogate pair.
std::optional<std::string> toUtf8(std::u16string_view utf16);

/// For messages: quoted, what cannot be printed as \uXXXX, long texts cut.
std::string quoted(std::u16string_view utf16);
std::string quoted(std::string_view utf8);

}  // namespace corvix::xmlbinc
