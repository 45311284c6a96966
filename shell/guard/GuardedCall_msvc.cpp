// For compilers with structured-exception blocks.
#include "shell/guard/GuardedCall_p.h"

#include <windows.h>

namespace corvix {

std::optional<u32> guardedCall(void (*function)(void*), void* argument) noexcept {
  __try {
    function(argument);
  } __except (EXCEPTION_EXECUTE_HANDLER) {
    const u32 code = GetExceptionCode();
    if (code == EXCEPTION_STACK_OVERFLOW) guardStackAgain();
    return code;
  }
  return std::nullopt;
}

}  // namespace corvix
