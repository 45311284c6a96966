#include "shell/guard/StartFile_p.h"

#include "core/baselib/system/UserData_p.h"

#include <windows.h>

namespace corvix {

FileStamp stampOf(const std::wstring& path) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return {};
  const auto joined = [](DWORD high, DWORD low) { return u64{high} << 32 | low; };
  return {joined(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime),
          joined(data.nFileSizeHigh, data.nFileSizeLow)};
}

std::wstring start_file::folder() {
  std::wstring chosen = environmentText(L"CORVIX_STARTS");
  if (!chosen.empty()) return chosen;
  const std::wstring data = userDataFolder();
  return data.empty() ? data : data + L"\\Starts";
}

}  // namespace corvix
