#include "core/baselib/system/CriticalSection.h"

#include <windows.h>

namespace corvix {

namespace {

// Short waits spin: the locks of the library are held for well under a microsecond.
constexpr DWORD kSpinCount = 4000;

CRITICAL_SECTION* native(void** storage) noexcept { return reinterpret_cast<CRITICAL_SECTION*>(storage); }

}  // namespace

SCriticalSection::SCriticalSection() noexcept {
  static_assert(sizeof(CRITICAL_SECTION) <= sizeof section_ && alignof(CRITICAL_SECTION) <= alignof(void*));
  InitializeCriticalSectionAndSpinCount(native(section_), kSpinCount);
}

SCriticalSection::~SCriticalSection() { DeleteCriticalSection(native(section_)); }

void SCriticalSection::enter() noexcept { EnterCriticalSection(native(section_)); }

bool SCriticalSection::tryEnter() noexcept { return TryEnterCriticalSection(native(section_)) != FALSE; }

void SCriticalSection::leave() noexcept { LeaveCriticalSection(native(section_)); }

}  // namespace corvix
