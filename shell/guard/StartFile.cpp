#include "shell/guard/StartFile_p.h"

#include <windows.h>

namespace corvix {

FileStamp stampOf(const std::wstring& path) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return {};
  const auto joined = [](DWORD high, DWORD low) { return u64{high} << 32 | low; };
  return {joined(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime),
          joined(data.nFileSizeHigh, data.nFileSizeLow)};
}

namespace {

std::wstring environment(const wchar_t* name) {
  std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), 0);
  const DWORD length =
      value.empty() ? 0 : GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
  value.resize(length < value.size() ? length : 0);
  return value;
}

}  // namespace

std::wstring start_file::folder() {
  const std::wstring chosen = environment(L"CORVIX_STARTS");
  if (!chosen.empty()) return chosen;
  const std::wstring data = environment(L"LOCALAPPDATA");
  return data.empty() ? data : data + L"\\Marrowby\\Corvix\\Starts";
}

}  // namespace corvix
