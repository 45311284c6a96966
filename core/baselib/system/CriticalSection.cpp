#include "core/baselib/system/CriticalSection.h"

#include "core/baselib/system/NativeSection_p.h"
#include "core/baselib/system/ProcessEnd_p.h"

namespace corvix {

namespace {

// Of the system, behind the looks below.
constexpr DWORD kSpinCount = 2000;

// Between two looks at a section that another thread has: some half a microsecond at first.
constexpr int kFewestPauses = 16;
constexpr int kMostPauses = 512;

const bool isOnlyProcessor = [] {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwNumberOfProcessors == 1;
}();

// The library's sections are held for well under a microsecond, and taken again soon. Each look takes the section's
// memory away from who has it: with ever longer pauses between them a thread does many operations before the section,
// and what it guards, goes from one processor to the other, where with eager looks that costs more than the operation.
bool isEnteredBetweenPauses(CRITICAL_SECTION* section) noexcept {
  for (int pauses = kFewestPauses; pauses <= kMostPauses; pauses *= 2) {
    for (int i = 0; i < pauses; ++i) YieldProcessor();
    if (TryEnterCriticalSection(section)) return true;
  }
  return false;
}

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
  } else if (isOnlyProcessor || !isEnteredBetweenPauses(section)) {
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
