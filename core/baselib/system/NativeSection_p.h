// The lock without the call in between, for the library's own short paths.
#pragma once

#include "core/baselib/system/CriticalSection.h"

#include <windows.h>

namespace corvix {

// The object is its section and nothing else.
inline CRITICAL_SECTION* native(SCriticalSection& section) noexcept {
  return reinterpret_cast<CRITICAL_SECTION*>(&section);
}

// When another thread has the section. While the process ends such a thread is gone: nobody is left to share with, and
// the section is passed by.
void enterContended(CRITICAL_SECTION* section) noexcept;

// True once a section was passed by; none is left from then on, for the system would wake those who waited.
extern bool sectionsStayAsTheyAre;

inline void enterNative(CRITICAL_SECTION* section) noexcept {
  if (!TryEnterCriticalSection(section)) [[unlikely]]
    enterContended(section);
}

inline void leaveNative(CRITICAL_SECTION* section) noexcept {
  if (!sectionsStayAsTheyAre) [[likely]]
    LeaveCriticalSection(section);
}

}  // namespace corvix
