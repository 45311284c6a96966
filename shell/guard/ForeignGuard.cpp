#include "shell/guard/ForeignGuard.h"

#include "core/baselib/system/ForeignCall.h"
#include "core/baselib/system/Log.h"
#include "shell/guard/GuardedModule_p.h"

namespace corvix {

bool callGuarded(const void* code, const wchar_t* place, void (*function)(void*), void* argument,
                 WideString* reason) noexcept {
  bool hasThrown = false;
  std::wstring thrown;
  const auto fault = guarded([&]() noexcept {
    try {
      function(argument);
    } catch (...) {
      hasThrown = true;
      thrown = textOfThrownIfItCan();
      logThrown(code, place);
    }
  });
  if (!fault && !hasThrown) return true;
  try {
    const std::wstring what = fault ? faultText(*fault) : L"an exception: " + thrown;
    if (fault) sWriteLog(L"%s: ended by %s\n", place, what.c_str());
    if (reason) reason->assign(what);
  } catch (const std::bad_alloc&) {
  }
  return false;
}

}  // namespace corvix
