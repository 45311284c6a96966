// Opening a document through the manager and a format of a plug-in, against the same done by hand.
#include "bench/Bench.h"
#include "shell/Shell.h"
#include "shell/documents/DocManager.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <windows.h>

namespace corvix::bench {
namespace {

// A megabyte of lines in UTF-8, with a letter of two bytes in each; removed at the end.
class TextFile {
 public:
  TextFile() {
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    path_ = folder + std::wstring(L"corvix-bench.txt");
    std::string text;
    while (text.size() < 1'000'000)
      text += "A line as there are many, with a caf\xC3\xA9 in it and some words more.\r\n";
    const HANDLE file = CreateFileW(path_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    CloseHandle(file);
  }
  ~TextFile() { DeleteFileW(path_.c_str()); }
  const wchar_t* path() const noexcept { return path_.c_str(); }

 private:
  std::wstring path_;
};

// The whole file, as UTF-16, with "\n" at the ends of lines and where each begins.
std::size_t readByHand(const wchar_t* path) {
  const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  LARGE_INTEGER size = {};
  GetFileSizeEx(file, &size);
  std::string bytes(static_cast<std::size_t>(size.QuadPart), 0);
  DWORD got = 0;
  ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr);
  CloseHandle(file);
  const int count = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(got), nullptr, 0);
  std::wstring raw(static_cast<std::size_t>(count), 0), text;
  MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(got), raw.data(), count);
  text.reserve(raw.size());
  std::vector<std::uint32_t> lines{0};
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == L'\r' && i + 1 < raw.size() && raw[i + 1] == L'\n') continue;
    text += raw[i] == L'\r' ? L'\n' : raw[i];
    if (text.back() == L'\n') lines.push_back(static_cast<std::uint32_t>(text.size()));
  }
  return lines.size();
}

void measureDocuments(Report& report) {
  const TextFile file;
  IDocManager& manager = *IShell::getInstance()->docManager();
  if (!manager.openDocument(file.path())) throw std::runtime_error("no format reads a text: format-text is missing");
  manager.closeDocument(manager.documentAt(0));
  report.compare(
      "open a text of 1 MB, close it", "reading, decoding, finding lines", 0,
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) manager.closeDocument(manager.openDocument(file.path()));
      },
      [&](std::uint64_t n) {
        for (std::uint64_t i = 0; i < n; ++i) {
          std::size_t lines = readByHand(file.path());
          keep(lines);
        }
      });
}

const Area area{"documents", measureDocuments};

}  // namespace
}  // namespace corvix::bench
