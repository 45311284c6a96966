// Between the system's texts and the program's, which are UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace corvix::tool {

std::wstring wide(std::string_view utf8);
std::string utf8(std::wstring_view text);
std::string utf8(std::u16string_view text);

// For people: without what would steer a terminal, and cut.
std::string shown(std::string_view utf8, std::size_t mostLetters = 1000);

std::string hexadecimal(std::uint32_t value);  // "0x0000002A"

std::string fileNameOf(const std::string& path);

// How many letters have to be changed, added or taken away to turn one text into the other.
std::size_t distance(std::u16string_view a, std::u16string_view b);

}  // namespace corvix::tool
