#include "plugins/gui/Store.h"

#include "core/baselib/system/ApplicationKey.h"

#include <cwchar>

namespace corvix::gui {

namespace {

constexpr std::size_t kLongestName = 200;
constexpr DWORD kLongestText = 256;

bool canBeKey(const std::wstring& name) { return name.size() <= kLongestName && name.find(L'\\') == name.npos; }

}  // namespace

Store::Store(const std::wstring& frame, const std::wstring& panel) {
  if (frame.empty() || !canBeKey(frame) || !canBeKey(panel)) return;
  path_ = std::wstring(applicationKey()) + L"\\Windows\\" + frame;
  if (!panel.empty()) path_ += L'\\' + panel;
}

std::optional<std::wstring> Store::text(const wchar_t* value) const {
  wchar_t found[kLongestText] = L"";
  DWORD size = sizeof found;
  if (path_.empty() ||
      RegGetValueW(HKEY_CURRENT_USER, path_.c_str(), value, RRF_RT_REG_SZ, nullptr, found, &size) != ERROR_SUCCESS)
    return std::nullopt;
  return found;
}

std::optional<int> Store::number(const wchar_t* value) const {
  const std::optional<std::wstring> found = text(value);
  if (!found) return std::nullopt;
  wchar_t* end = nullptr;
  const long number = std::wcstol(found->c_str(), &end, 10);
  return *end || end == found->c_str() ? std::nullopt : std::optional<int>(static_cast<int>(number));
}

void Store::setText(const wchar_t* value, const std::wstring& text) const {
  HKEY key = nullptr;
  if (path_.empty() || RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &key,
                                       nullptr) != ERROR_SUCCESS)
    return;
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  RegSetValueExW(key, value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), static_cast<DWORD>(bytes));
  RegCloseKey(key);
}

}  // namespace corvix::gui
