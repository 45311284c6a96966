#include "shell/modules/ModuleFolder_p.h"

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/system/KernelFile_p.h"
#include "core/xml/Attributes_p.h"

#include <algorithm>

namespace corvix {

namespace {

// The system finds "x.dll_old" as well: its short name ends as wanted.
bool isModuleName(std::wstring_view name) noexcept {
  constexpr std::wstring_view kExtension = L".dll";
  return name.size() >= kExtension.size() && equalInAnyCase(name.substr(name.size() - kExtension.size()), kExtension);
}

void take(std::vector<FolderFile>& files, std::wstring_view name, DWORD attributes, const DirectoryStamp& stamp) {
  if (attributes & FILE_ATTRIBUTE_DIRECTORY || !isModuleName(name)) return;
  files.push_back({std::wstring(name), attributes & FILE_ATTRIBUTE_REPARSE_POINT ? DirectoryStamp{} : stamp});
}

u64 unsignedOf(const LARGE_INTEGER& value) noexcept { return static_cast<u64>(value.QuadPart); }

// False when the file system cannot list its files with their identities.
bool listWithStamps(const std::wstring& folder, std::vector<FolderFile>& files) {
  constexpr u32 kBytes = 64 * 1024;
  const FileHandle directory(CreateFileW((folder + L"\\").c_str(), FILE_LIST_DIRECTORY,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!directory) return false;
  HeapBuffer<unsigned char> buffer;
  buffer.allocate(kBytes);
  while (GetFileInformationByHandleEx(directory.get(), FileIdBothDirectoryInfo, buffer.get(), kBytes)) {
    const unsigned char* at = buffer.get();
    for (;;) {
      const auto& entry = *reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(at);
      take(files, {entry.FileName, entry.FileNameLength / sizeof(wchar_t)}, entry.FileAttributes,
           {unsignedOf(entry.EndOfFile), unsignedOf(entry.LastWriteTime), unsignedOf(entry.ChangeTime),
            unsignedOf(entry.FileId)});
      if (!entry.NextEntryOffset) break;
      at += entry.NextEntryOffset;
    }
  }
  return GetLastError() == ERROR_NO_MORE_FILES;
}

void listNames(const std::wstring& folder, std::vector<FolderFile>& files) {
  WIN32_FIND_DATAW found;
  const SearchHandle search(
      FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, 0));
  if (!search) return;
  do {
    take(files, found.cFileName, found.dwFileAttributes, {});
  } while (FindNextFileW(search.get(), &found));
}

}  // namespace

// Most names are ASCII, and many in one folder begin alike.
bool standsBefore(std::wstring_view a, std::wstring_view b) noexcept {
  const auto upper = [](wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - 0x20) : c; };
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t at = 0;
  while (at < common && (a[at] | b[at]) < 0x80 && upper(a[at]) == upper(b[at])) ++at;
  if (at == common) return a.size() < b.size();
  if ((a[at] | b[at]) < 0x80) return upper(a[at]) < upper(b[at]);
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
         CSTR_LESS_THAN;
}

std::vector<FolderFile> modulesOf(const std::wstring& folder) {
  std::vector<FolderFile> files;
  if (!listWithStamps(folder, files)) {
    files.clear();
    listNames(folder, files);
  }
  const auto before = [](const FolderFile& a, const FolderFile& b) { return standsBefore(a.name, b.name); };
  if (!std::is_sorted(files.begin(), files.end(), before)) std::sort(files.begin(), files.end(), before);
  return files;
}

}  // namespace corvix
