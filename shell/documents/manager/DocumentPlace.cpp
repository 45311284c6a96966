#include "shell/documents/manager/DocumentPlace_p.h"

#include "core/baselib/system/KernelFile_p.h"
#include "core/suppliers/FileLocation.h"

namespace corvix {

namespace {

std::wstring fullPath(const wchar_t* path) {
  const DWORD size = GetFullPathNameW(path, 0, nullptr, nullptr);
  std::wstring full(size, 0);
  const DWORD length = size ? GetFullPathNameW(path, size, full.data(), nullptr) : 0;
  full.resize(length < size ? length : 0);
  return full;
}

std::wstring withoutMark(const std::wstring& path) {
  if (path.compare(0, 8, L"\\\\?\\UNC\\") == 0) return L"\\\\" + path.substr(8);
  return path.compare(0, 4, L"\\\\?\\") == 0 ? path.substr(4) : path;
}

u64 join(DWORD high, DWORD low) noexcept { return u64{high} << 32 | low; }

}  // namespace

bool resolvePlace(const wchar_t* location, DocumentPlace& place) {
  if (!location || !*location) return false;
  const UrlRecord url = isPath(location) ? UrlRecord(locationOfPath(fullPath(location)))
                                         : UrlRecord().resolve(std::wstring_view(location));
  if (!url.isScheme(L"file")) {
    if (!url.has(UrlPart::Scheme)) return false;
    place.location = url.text().view();
    place.title = url.value(UrlPart::FileName).view();
    if (place.title.empty()) place.title = place.location;
    return true;
  }
  place.path = pathOfLocation(url).view();
  place.location = withoutMark(place.path);
  place.title = place.location.substr(place.location.find_last_of(L'\\') + 1);
  return !place.title.empty();
}

u32 stateOf(const std::wstring& path, FileState& state) noexcept {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const FileHandle file(CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  BY_HANDLE_FILE_INFORMATION info;
  if (!file || !GetFileInformationByHandle(file.get(), &info)) return GetLastError();
  if (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return kIsFolder;
  state = {info.dwVolumeSerialNumber, join(info.nFileIndexHigh, info.nFileIndexLow),
           join(info.nFileSizeHigh, info.nFileSizeLow),
           join(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime)};
  return 0;
}

bool isSamePath(const std::wstring& a, const std::wstring& b) noexcept {
  return a.size() == b.size() && CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                                      static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

bool isWritable(const std::wstring& path) noexcept {
  constexpr u32 kShareAll = file_mode::kShareRead | file_mode::kShareWrite | file_mode::kShareDelete;
  const DWORD attributes = GetFileAttributesW(path.c_str());  // which an administrator's rights do not heed
  return !(attributes & FILE_ATTRIBUTE_READONLY) && openFile(path.c_str(), file_mode::kWrite | kShareAll);
}

std::wstring systemText(u32 error) {
  if (error == kIsFolder) return L"It is a folder.";
  wchar_t text[512];
  constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
  DWORD length = FormatMessageW(kFlags, nullptr, error, 0, text, static_cast<DWORD>(std::size(text)), nullptr);
  while (length && text[length - 1] == L' ') --length;
  return length ? std::wstring(text, length) : L"Error " + std::to_wstring(error) + L" of the system.";
}

}  // namespace corvix
