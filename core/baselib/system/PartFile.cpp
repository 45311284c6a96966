#include "core/baselib/system/PartFile_p.h"

#include "core/baselib/system/KernelFile_p.h"

namespace corvix {

PartFile::PartFile(const wchar_t* place, u32* error) : place_(place) {
  constexpr int kMostTries = 1000;
  // A name may have 255 units, or bytes where the disk is another system's: of a long one the beginning is taken.
  constexpr std::size_t kMostUnits = 80;
  const std::size_t folder = place_.find_last_of(L"\\/") + 1;
  std::wstring beginning = place_;
  if (place_.size() - folder > kMostUnits) {
    beginning.resize(folder + kMostUnits);
    if ((beginning.back() & 0xFC00) == 0xD800) beginning.pop_back();  // no half of a character
  }
  for (int number = 1; number <= kMostTries; ++number) {
    std::wstring part = beginning + (number > 1 ? L"." + std::to_wstring(number) : std::wstring()) + L".part";
    if (openFile(part.c_str(), file_mode::kWrite | file_mode::kNew)) {
      path_.swap(part);
      return;
    }
    if (error) *error = GetLastError();
    if (GetFileAttributesW(part.c_str()) == INVALID_FILE_ATTRIBUTES) break;
  }
}

PartFile::~PartFile() {
  if (!path_.empty()) DeleteFileW(path_.c_str());
}

u32 PartFile::flush() const noexcept {
  const FileHandle file = openFile(path_.c_str(), file_mode::kWrite);
  return file && FlushFileBuffers(file.get()) ? 0 : GetLastError();
}

u32 PartFile::takePlace() noexcept {
  const DWORD attributes = GetFileAttributesW(place_.c_str());
  constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  if (attributes != INVALID_FILE_ATTRIBUTES && attributes & kKept)
    SetFileAttributesW(path_.c_str(), (attributes & kKept) | FILE_ATTRIBUTE_ARCHIVE);
  if (!MoveFileExW(path_.c_str(), place_.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    return GetLastError();
  path_.clear();
  return 0;
}

}  // namespace corvix
