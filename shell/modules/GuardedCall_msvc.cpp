// For compilers with structured-exception blocks.
#include "shell/modules/GuardedCall_p.h"

#include <windows.h>

namespace corvix {

u32 guardedCall(void (*function)(void*), void* argument) noexcept {
  __try {
    function(argument);
  } __except (GetExceptionCode() >> 30 == 3 ? EXCEPTION_EXECUTE_HANDLER : EXCEPTION_CONTINUE_SEARCH) {
    return GetExceptionCode();
  }
  return 0;
}

}  // namespace corvix
