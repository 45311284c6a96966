#include "tools/xmlbinc/Platform.h"

#include <windows.h>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <stdio.h>
// after windows.h
#include <shellapi.h>

namespace corvix::xmlbinc {

namespace {

std::string toUtf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string utf8(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
  utf8.pop_back();
  return utf8;
}

}  // namespace

/// `argv` is in the system's code page, which lacks letters that file names have.
std::vector<std::string> commandLineArguments(int, char**) {
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> wide(CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
  std::vector<std::string> arguments;
  for (int i = 1; wide && i < count; ++i) arguments.push_back(toUtf8(wide.get()[i]));
  return arguments;
}

void makeStandardStreamsBinary() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

}  // namespace corvix::xmlbinc
