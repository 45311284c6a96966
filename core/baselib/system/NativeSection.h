// The lock without the call in between, for the library's own short paths.
#pragma once

#include "core/baselib/system/CriticalSection.h"

#include <windows.h>

namespace corvix {

// The object is its section and nothing else.
inline CRITICAL_SECTION* native(SCriticalSection& section) noexcept {
  return reinterpret_cast<CRITICAL_SECTION*>(&section);
}

}  // namespace corvix
