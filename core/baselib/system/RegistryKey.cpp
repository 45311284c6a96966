#include "core/baselib/system/RegistryKey.h"

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

WideString RegistryKey::text(const wchar_t* name) const {
  wchar_t inPlace[kInPlaceUnits];
  DWORD type = 0;
  DWORD size = sizeof inPlace;
  LSTATUS status = RegQueryValueExW(key_.get(), name, nullptr, &type, reinterpret_cast<unsigned char*>(inPlace), &size);
  if (status == ERROR_SUCCESS) return type == REG_SZ ? upToZero(inPlace, size) : std::wstring_view();
  if (status != ERROR_MORE_DATA || type != REG_SZ || size > kMostBytes) return {};
  std::vector<wchar_t> units((size + 1) / sizeof(wchar_t));
  size = static_cast<DWORD>(units.size() * sizeof(wchar_t));
  status = RegQueryValueExW(key_.get(), name, nullptr, &type, reinterpret_cast<unsigned char*>(units.data()), &size);
  return status == ERROR_SUCCESS && type == REG_SZ ? upToZero(units.data(), size) : std::wstring_view();
}

bool RegistryKey::setText(const wchar_t* name, const WideString& text) const noexcept {
  const auto size = static_cast<DWORD>((text.length() + 1) * sizeof(wchar_t));
  return RegSetValueExW(key_.get(), name, 0, REG_SZ, reinterpret_cast<const unsigned char*>(text.c_str()), size) ==
         ERROR_SUCCESS;
}

std::wstring registryPathOf(const std::wstring& executable) {
  std::wstring path = executable;
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return L"Software\\Marrowby\\Corvix\\" + path;
}

}  // namespace corvix
