#include "examples/host/Console.h"

#include "tools/xmlbinc/Harmless.h"

#include <algorithm>
#include <utility>

#include <windows.h>
#include <shellapi.h>

namespace host {

namespace {

// Code points, which is what the columns are counted in.
std::size_t widthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

std::string shown(std::wstring_view text, std::size_t mostLetters) {
  return utf8(corvix::xmlbinc::harmless(text, mostLetters));
}

std::string utf8(std::wstring_view text) {
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<std::size_t>(size), 0);
  WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.data(), size, nullptr, nullptr);
  return result;
}

std::wstring wide(std::string_view utf8Text) {
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8Text.data(), static_cast<int>(utf8Text.size()), nullptr, 0);
  std::wstring result(static_cast<std::size_t>(size), 0);
  MultiByteToWideChar(CP_UTF8, 0, utf8Text.data(), static_cast<int>(utf8Text.size()), result.data(), size);
  return result;
}

std::vector<std::string> arguments() {
  int count = 0;
  wchar_t** const all = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> result;
  for (int i = 1; i < count; ++i) result.push_back(utf8(all[i]));
  LocalFree(all);
  return result;
}

void prepareConsole() { SetConsoleOutputCP(CP_UTF8); }

void Table::print(std::FILE* to) const {
  std::vector<std::size_t> widths;
  for (const auto& row : rows_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], widthOf(row[i]));
  }
  for (std::size_t r = 0; r < rows_.size(); ++r) {
    std::string line;
    for (std::size_t i = 0; i < rows_[r].size(); ++i) {
      line += rows_[r][i] + std::string(widths[i] - widthOf(rows_[r][i]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::fprintf(to, "  %s\n", line.c_str());
    if (r > 0) continue;
    std::string rule;
    for (std::size_t width : widths) rule += std::string(width, '-') + "  ";
    rule.resize(rule.size() - 2);
    std::fprintf(to, "  %s\n", rule.c_str());
  }
}

}  // namespace host
