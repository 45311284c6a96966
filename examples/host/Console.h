// Writing to the console: UTF-8 whatever the system's code page, and tables.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace host {

std::string utf8(std::wstring_view text);
std::wstring wide(std::string_view utf8Text);

// What a module says, for a console: UTF-8 in which whatever would steer a terminal or turn the direction of writing is
// a replacement character; cut behind so many letters.
std::string shown(std::wstring_view text, std::size_t mostLetters = 60);
constexpr std::size_t kSentence = 500;  // so many for what is no name

// The program's arguments in UTF-8, without the program itself.
std::vector<std::string> arguments();

// Makes the console show UTF-8.
void prepareConsole();

// A table with a rule under its heading; columns are as wide as they need to be.
class Table {
 public:
  explicit Table(std::vector<std::string> heading) : rows_{std::move(heading)} {}
  void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  void print(std::FILE* to = stdout) const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace host
