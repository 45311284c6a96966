#include "core/baselib/system/ApplicationKey.h"

#include "core/baselib/system/ApplicationKey_p.h"
#include "core/baselib/system/RegistryKey_p.h"

namespace corvix {

const std::wstring& applicationKeyPath() {
  static const std::wstring path = [] {
    // A longer path is cut; it could not be the name of a key anyway, so nothing is kept then.
    wchar_t executable[260];
    return registryPathOf({executable, GetModuleFileNameW(nullptr, executable, 260)});
  }();
  return path;
}

WideString applicationKey() { return applicationKeyPath(); }

}  // namespace corvix
