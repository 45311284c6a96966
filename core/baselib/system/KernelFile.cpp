#include "core/baselib/system/FileWindow_p.h"

namespace corvix {

FileHandle openFile(const wchar_t* path, u32 mode) noexcept {
  const auto has = [mode](u32 word) { return (mode & word) != 0; };
  const DWORD access = (has(file_mode::kRead) ? GENERIC_READ : 0) | (has(file_mode::kWrite) ? GENERIC_WRITE : 0);
  const DWORD share = (has(file_mode::kShareRead) ? FILE_SHARE_READ : 0u) |
                      (has(file_mode::kShareWrite) ? FILE_SHARE_WRITE : 0u) |
                      (has(file_mode::kShareDelete) ? FILE_SHARE_DELETE : 0u);
  DWORD disposition = OPEN_EXISTING;
  if (has(file_mode::kCreate)) disposition = has(file_mode::kAppend) ? OPEN_ALWAYS : CREATE_ALWAYS;
  if (has(file_mode::kNew)) disposition = CREATE_NEW;
  FileHandle file(CreateFileW(path, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (file && has(file_mode::kAppend)) SetFilePointerEx(file.get(), LARGE_INTEGER{}, nullptr, FILE_END);
  return file;
}

u32 FileWindow::open(const wchar_t* path) noexcept {
  file_.reset(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!file_) return GetLastError();
  LARGE_INTEGER size;
  if (!GetFileSizeEx(file_.get(), &size)) return GetLastError();
  if (GetFileType(file_.get()) != FILE_TYPE_DISK) return ERROR_BAD_FILE_TYPE;
  size_ = static_cast<u64>(size.QuadPart);
  held_ = 0;
  return 0;
}

u32 FileWindow::readFile(u64 offset, void* to, u32 mostBytes) noexcept {
  LARGE_INTEGER at;
  at.QuadPart = static_cast<LONGLONG>(offset);
  DWORD got = 0;
  const bool isRead =
      SetFilePointerEx(file_.get(), at, nullptr, FILE_BEGIN) && ReadFile(file_.get(), to, mostBytes, &got, nullptr);
  return isRead ? got : 0;
}

std::wstring modulePath(HMODULE module) {
  std::wstring path(MAX_PATH, 0);
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      path.shrink_to_fit();  // some are kept
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
