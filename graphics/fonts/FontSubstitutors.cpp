#include "graphics/fonts/FontSubstitutors.h"

#include "core/baselib/system/RegistryKey.h"
#include "core/baselib/text/WideString.h"

#include <algorithm>
#include <cwchar>

#include <windows.h>

namespace corvix {

namespace {

constexpr wchar_t kSubstitutesKey[] = L"Software\\Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes";

class Font final : public IFMFont {
 public:
  Font(std::wstring_view family, bool isSubstitute) : family_(family), isSubstitute_(isSubstitute) {}
  const wchar_t* family() const noexcept override { return family_.c_str(); }
  bool isSubstitute() const noexcept override { return isSubstitute_; }

 private:
  WideString family_;
  bool isSubstitute_;
};

int CALLBACK takeFirst(const LOGFONTW* found, const TEXTMETRICW*, DWORD, LPARAM result) {
  *reinterpret_cast<WideString*>(result) = WideString(found->lfFaceName);
  return 0;
}

// The family's name as the system spells it; empty when it is not installed.
WideString installed(std::wstring_view family) {
  WideString found;
  LOGFONTW wanted{};
  if (family.empty() || family.size() >= LF_FACESIZE) return found;
  wanted.lfCharSet = DEFAULT_CHARSET;
  std::copy(family.begin(), family.end(), wanted.lfFaceName);
  HDC__* const screen = CreateCompatibleDC(nullptr);
  EnumFontFamiliesExW(screen, &wanted, takeFirst, reinterpret_cast<LPARAM>(&found), 0);
  DeleteDC(screen);
  return found;
}

// What stands in the table, without the character set that may follow behind a comma.
WideString substituteFor(const wchar_t* family) {
  const RegistryKey key = RegistryKey::open(HKEY_LOCAL_MACHINE, kSubstitutesKey, KEY_QUERY_VALUE);
  const WideString entry = key ? key.text(family) : WideString();
  return entry.view().substr(0, entry.view().find(L','));
}

}  // namespace

IFMFont* SystemFontSubstitutor::createFont(const wchar_t* family) {
  if (const WideString own = installed(family); !own.empty()) return new Font(own, false);
  const WideString other = installed(substituteFor(family));
  return other.empty() ? nullptr : new Font(other, true);
}

IFMFont* FakeSubstitutor::createFont(const wchar_t* family) {
  LOGFONTW dialogs{};
  GetObjectW(GetStockObject(DEFAULT_GUI_FONT), sizeof dialogs, &dialogs);
  return new Font(dialogs.lfFaceName, std::wcscmp(dialogs.lfFaceName, family) != 0);
}

}  // namespace corvix
