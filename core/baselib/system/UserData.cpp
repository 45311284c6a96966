#include "core/baselib/system/UserData_p.h"

#include "core/baselib/system/KernelFile_p.h"

namespace corvix {

std::wstring environmentText(const wchar_t* name) {
  std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), 0);
  const DWORD length =
      value.empty() ? 0 : GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
  value.resize(length < value.size() ? length : 0);
  return value;
}

std::wstring userDataFolder() {
  const std::wstring data = environmentText(L"LOCALAPPDATA");
  return data.empty() ? data : data + L"\\Marrowby\\Corvix";
}

void makeFolders(const std::wstring& path) {
  if (CreateDirectoryW(path.c_str(), nullptr) || GetLastError() != ERROR_PATH_NOT_FOUND) return;
  const std::wstring above = folderOf(path);
  if (above.size() >= path.size() || above.empty()) return;
  makeFolders(above);
  CreateDirectoryW(path.c_str(), nullptr);
}

}  // namespace corvix
