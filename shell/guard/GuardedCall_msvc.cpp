// For compilers with structured-exception blocks.
#include "shell/guard/GuardedCall_p.h"

#include <windows.h>
#include <malloc.h>

namespace corvix {

u32 guardedCall(void (*function)(void*), void* argument) noexcept {
  __try {
    function(argument);
  } __except (GetExceptionCode() >> 31 ? EXCEPTION_EXECUTE_HANDLER : EXCEPTION_CONTINUE_SEARCH) {
    const u32 code = GetExceptionCode();
    if (code == EXCEPTION_STACK_OVERFLOW) _resetstkoflw();  // the next one is an exception again
    return code;
  }
  return 0;
}

}  // namespace corvix
