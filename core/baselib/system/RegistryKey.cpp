#include "core/baselib/system/RegistryKey_p.h"

#include <algorithm>
#include <vector>

namespace corvix {

namespace {

constexpr DWORD kInPlaceUnits = 256;
constexpr DWORD kMostBytes = 1024 * 1024;

constexpr bool isString(DWORD type) noexcept { return type == REG_SZ || type == REG_EXPAND_SZ; }

std::wstring_view upToZero(const wchar_t* units, DWORD sizeBytes) noexcept {
  return {units, static_cast<std::size_t>(std::find(units, units + sizeBytes / sizeof(wchar_t), L'\0') - units)};
}

}  // namespace

RegistryKey RegistryKey::open(HKEY parent, const std::wstring& path, REGSAM access) noexcept {
  HKEY key = nullptr;
  return RegistryKey(RegOpenKeyExW(parent, path.c_str(), 0, access, &key) == ERROR_SUCCESS ? key : nullptr);
}

RegistryKey RegistryKey::create(HKEY parent, const std::wstring& path, REGSAM access, bool* isNew) noexcept {
  HKEY key = nullptr;
  DWORD disposition = 0;
  const LSTATUS status = RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, access, nullptr, &key, &disposition);
  if (isNew) *isNew = status == ERROR_SUCCESS && disposition == REG_CREATED_NEW_KEY;
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

RegistryKey::Reading RegistryKey::readText(const wchar_t* name, WideString& text) const {
  text = {};
  wchar_t inPlace[kInPlaceUnits];
  std::vector<wchar_t> units;
  wchar_t* to = inPlace;
  DWORD type = 0;
  DWORD size = sizeof inPlace;
  const auto query = [&] {
    return RegQueryValueExW(key_.get(), name, nullptr, &type, reinterpret_cast<unsigned char*>(to), &size);
  };
  LSTATUS status = query();
  if (status == ERROR_MORE_DATA && isString(type) && size <= kMostBytes) {
    units.resize((size + 1) / sizeof(wchar_t));
    to = units.data();
    size = static_cast<DWORD>(units.size()) * DWORD{sizeof(wchar_t)};
    status = query();
  }
  if (status == ERROR_FILE_NOT_FOUND) return Reading::Missing;
  if (status != ERROR_SUCCESS || !isString(type)) return Reading::Unreadable;
  text = upToZero(to, size);
  return Reading::Text;
}

WideString RegistryKey::text(const wchar_t* name) const {
  WideString text;
  readText(name, text);
  return text;
}

bool RegistryKey::setText(const wchar_t* name, const WideString& text) const noexcept {
  DWORD type = REG_SZ;
  if (RegQueryValueExW(key_.get(), name, nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS || !isString(type))
    type = REG_SZ;
  return setText(name, text, type);
}

bool RegistryKey::setNewText(const wchar_t* name, const WideString& text) const noexcept {
  return setText(name, text, REG_SZ);
}

bool RegistryKey::setText(const wchar_t* name, const WideString& text, DWORD type) const noexcept {
  const std::size_t size = (std::size_t{text.length()} + 1) * sizeof(wchar_t);
  if (size > kMostBytes || text.view().find(L'\0') != std::wstring_view::npos) return false;
  return RegSetValueExW(key_.get(), name, 0, type, reinterpret_cast<const unsigned char*>(text.c_str()),
                        static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

std::wstring registryPathOf(const std::wstring& executable) {
  std::wstring path = executable;
  std::replace(path.begin(), path.end(), L'\\', L'/');
  return L"Software\\Marrowby\\Corvix\\" + path;
}

}  // namespace corvix
