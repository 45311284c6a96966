#include "core/baselib/system/RegistryKey_p.h"

#include <algorithm>

namespace corvix {

RegistryKey RegistryKey::open(HKEY parent, const std::wstring& path, REGSAM access) noexcept {
  HKEY key = nullptr;
  return RegistryKey(RegOpenKeyExW(parent, path.c_str(), 0, access, &key) == ERROR_SUCCESS ? key : nullptr);
}

RegistryKey RegistryKey::create(HKEY parent, const std::wstring& path, REGSAM access) noexcept {
  HKEY key = nullptr;
  const LSTATUS status = RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, access, nullptr, &key, nullptr);
  return RegistryKey(status == ERROR_SUCCESS ? key : nullptr);
}

std::optional<u32> RegistryKey::number(const wchar_t* name) const noexcept {
  DWORD type = 0;
  DWORD value = 0;
  DWORD size = sizeof value;
  const LSTATUS status =
      RegQueryValueExW(key_.get(), name, nullptr, &type, reinterpret_cast<unsigned char*>(&value), &size);
  if (status != ERROR_SUCCESS || type != REG_DWORD || size != sizeof value) return std::nullopt;
  return value;
}

bool RegistryKey::setNumber(const wchar_t* name, u32 value) const noexcept {
  const DWORD stored = value;
  return RegSetValueExW(key_.get(), name, 0, REG_DWORD, reinterpret_cast<const unsigned char*>(&stored),
                        sizeof stored) == ERROR_SUCCESS;
}

std::wstring registryPathOf(const std::wstring& executable) {
  std::wstring path = executable;
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return L"Software\\Marrowby\\Corvix\\" + path;
}

}  // namespace corvix
