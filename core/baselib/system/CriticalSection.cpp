#include "core/baselib/system/CriticalSection.h"

#include "core/baselib/system/NativeSection_p.h"
#include "core/baselib/system/ProcessEnd_p.h"

namespace corvix {

namespace {

// Short waits spin: the locks of the library are held for well under a microsecond.
constexpr DWORD kSpinCount = 4000;

}  // namespace

SCriticalSection::SCriticalSection() noexcept {
  static_assert(sizeof(CRITICAL_SECTION) <= sizeof section_ && alignof(CRITICAL_SECTION) <= alignof(void*));
  InitializeCriticalSectionAndSpinCount(native(*this), kSpinCount);
}

SCriticalSection::~SCriticalSection() { DeleteCriticalSection(native(*this)); }

constinit bool sectionsStayAsTheyAre = false;

void enterContended(CRITICAL_SECTION* section) noexcept {
  if (isProcessEnding()) {
    sectionsStayAsTheyAre = true;  // no other thread is there to read it
  } else {
    EnterCriticalSection(section);
  }
}

void SCriticalSection::enter() noexcept { enterNative(native(*this)); }

bool SCriticalSection::tryEnter() noexcept { return TryEnterCriticalSection(native(*this)) != FALSE; }

u32 SCriticalSection::heldCount() const noexcept {
  const CRITICAL_SECTION& section = *native(const_cast<SCriticalSection&>(*this));
  const bool isMine = static_cast<u32>(reinterpret_cast<std::uintptr_t>(section.OwningThread)) == GetCurrentThreadId();
  return isMine ? static_cast<u32>(section.RecursionCount) : 0;
}

void SCriticalSection::leave() noexcept { leaveNative(native(*this)); }

}  // namespace corvix
