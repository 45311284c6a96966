#include "shell/guard/KeptStack_p.h"

#include <windows.h>

namespace corvix {

namespace {

constexpr ULONG kStackKept = 32 * 1024;

}  // namespace

void keepStack() noexcept {
  ULONG kept = 0;
  if (!SetThreadStackGuarantee(&kept) || kept >= kStackKept) return;
  kept = kStackKept;
  if (!SetThreadStackGuarantee(&kept)) return;
  // Wine commits a stack as a whole, and its guard stays at the bottom, where nothing is kept: there is one more to
  // set.
  MEMORY_BASIC_INFORMATION here, above;
  constexpr DWORD kPage = 4096;
  if (!VirtualQuery(&kept, &here, sizeof here)) return;
  auto* const guard = static_cast<char*>(here.AllocationBase) + kPage + kStackKept;
  if (guard + kStackKept < reinterpret_cast<char*>(&kept) && VirtualQuery(guard, &above, sizeof above) &&
      above.State == MEM_COMMIT && above.Protect == PAGE_READWRITE)
    VirtualProtect(guard, kPage, PAGE_READWRITE | PAGE_GUARD, &above.Protect);
}

}  // namespace corvix
