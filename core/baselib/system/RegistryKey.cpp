#include "core/baselib/system/RegistryKey_p.h"

#include <algorithm>
#include <vector>

namespace corvix {

namespace {

constexpr DWORD kInPlaceUnits = 256;
constexpr DWORD kMostBytes = 1024 * 1024;

std::wstring_view upToZero(const wchar_t* units, DWORD sizeBytes) noexcept {
  return {units, static_cast<std::size_t>(std::find(units, units + sizeBytes / sizeof(wchar_t), L'\0') - units)};
}

}  // namespace

RegistryKey openRegistryKey(HKEY root, const wchar_t* path, REGSAM access) noexcept {
  HKEY key = nullptr;
  return RegistryKey(RegOpenKeyExW(root, path, 0, access, &key) == ERROR_SUCCESS ? key : nullptr);
}

RegistryKey createRegistryKey(HKEY root, const wchar_t* path, REGSAM access) noexcept {
  HKEY key = nullptr;
  const LSTATUS status =
      RegCreateKeyExW(root, path, 0, nullptr, REG_OPTION_NON_VOLATILE, access, nullptr, &key, nullptr);
  return RegistryKey(status == ERROR_SUCCESS ? key : nullptr);
}

WideString readRegistryText(const RegistryKey& key, const wchar_t* name) {
  wchar_t inPlace[kInPlaceUnits];
  DWORD type = 0;
  DWORD sizeBytes = sizeof inPlace;
  LSTATUS status = RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(inPlace), &sizeBytes);
  if (status == ERROR_SUCCESS) return type == REG_SZ ? upToZero(inPlace, sizeBytes) : std::wstring_view();
  if (status != ERROR_MORE_DATA || type != REG_SZ || sizeBytes > kMostBytes) return {};
  std::vector<wchar_t> units((sizeBytes + 1) / sizeof(wchar_t));
  sizeBytes = static_cast<DWORD>(units.size() * sizeof(wchar_t));
  status = RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(units.data()), &sizeBytes);
  return status == ERROR_SUCCESS && type == REG_SZ ? upToZero(units.data(), sizeBytes) : std::wstring_view();
}

std::optional<u32> readRegistryNumber(const RegistryKey& key, const wchar_t* name) noexcept {
  DWORD type = 0;
  DWORD number = 0;
  DWORD sizeBytes = sizeof number;
  const LSTATUS status =
      RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &sizeBytes);
  if (status != ERROR_SUCCESS || type != REG_DWORD || sizeBytes != sizeof number) return std::nullopt;
  return number;
}

bool writeRegistryText(const RegistryKey& key, const wchar_t* name, const WideString& text) noexcept {
  const auto sizeBytes = static_cast<DWORD>((text.length() + 1) * sizeof(wchar_t));
  return RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), sizeBytes) ==
         ERROR_SUCCESS;
}

}  // namespace corvix
