// For compilers with structured-exception blocks.
#include "shell/guard/GuardedCall_p.h"

#include <windows.h>
#include <malloc.h>

namespace corvix {

u32 guardedCall(void (*function)(void*), void* argument) noexcept {
  __try {
    function(argument);
  } __except (EXCEPTION_EXECUTE_HANDLER) {
    const u32 code = GetExceptionCode();
    if (code == EXCEPTION_STACK_OVERFLOW) _resetstkoflw();  // the next one is an exception again
    return code;
  }
  return 0;
}

}  // namespace corvix
