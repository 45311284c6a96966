#include "core/baselib/system/KernelFile.h"

namespace corvix {

FileHandle openFile(const wchar_t* path, u32 mode) noexcept {
  const auto has = [mode](u32 word) { return (mode & word) != 0; };
  const DWORD access = (has(file_mode::kRead) ? GENERIC_READ : 0) | (has(file_mode::kWrite) ? GENERIC_WRITE : 0);
  const DWORD share =
      (has(file_mode::kShareRead) ? FILE_SHARE_READ : 0u) | (has(file_mode::kShareWrite) ? FILE_SHARE_WRITE : 0u);
  DWORD disposition = OPEN_EXISTING;
  if (has(file_mode::kCreate)) disposition = has(file_mode::kAppend) ? OPEN_ALWAYS : CREATE_ALWAYS;
  FileHandle file(CreateFileW(path, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (file && has(file_mode::kAppend)) SetFilePointerEx(file.get(), LARGE_INTEGER{}, nullptr, FILE_END);
  return file;
}

std::optional<std::vector<unsigned char>> readWholeFile(const wchar_t* path, u64 mostBytes) {
  const FileHandle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  LARGE_INTEGER size;
  if (!file || !GetFileSizeEx(file.get(), &size) || static_cast<u64>(size.QuadPart) > mostBytes) return std::nullopt;
  std::vector<unsigned char> bytes(static_cast<std::size_t>(size.QuadPart));
  std::size_t done = 0;
  while (done < bytes.size()) {
    DWORD got = 0;
    if (!ReadFile(file.get(), bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &got, nullptr))
      return std::nullopt;
    if (got == 0) break;
    done += got;
  }
  bytes.resize(done);
  return bytes;
}

std::wstring modulePath(HMODULE module) {
  std::wstring path(MAX_PATH, 0);
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

std::wstring folderOf(const std::wstring& path) {
  const std::size_t separator = path.find_last_of(L"\\/");
  return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator);
}

}  // namespace corvix
