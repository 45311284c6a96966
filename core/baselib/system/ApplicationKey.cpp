#include "core/baselib/system/ApplicationKey_p.h"

#include <algorithm>

#include <windows.h>

namespace corvix {

const std::wstring& applicationKeyPath() {
  static const std::wstring path = [] {
    // A longer path is cut; it could not be the name of a key anyway, so nothing is kept then.
    wchar_t executable[260];
    std::wstring name(executable, GetModuleFileNameW(nullptr, executable, 260));
    std::replace(name.begin(), name.end(), L'\\', L'/');
    return L"Software\\Marrowby\\Corvix\\" + name;
  }();
  return path;
}

}  // namespace corvix
