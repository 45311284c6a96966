// Every call of the system that a public operation makes on files, the registry, GDI or GDI+ fails in turn.
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/objects/NotifySender.h"
#include "core/baselib/system/CriticalSection.h"
#include "graphics/gdiplus/GdiPlusTable_p.h"
#include "tests/graphics/GdiObjects.h"
#include "tests/library/PublicOperations.h"
#include "tests/support/HeapFaults.h"
#include "tests/support/ImportTable.h"
#include "tests/support/OwnRegistry.h"
#include "tests/support/SweepSteps.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <memory>
#include <vector>

namespace corvix {
namespace {

using testing_support::PublicOperation;
using testing_support::SystemFaults;

// One function of the system, as this program imports it. `Failed` is what it answers when it fails.
template <class Name, auto Failed, class Function>
class Seam;
template <class Name, auto Failed, class Result, class... Arguments>
class Seam<Name, Failed, Result(WINAPI*)(Arguments...)> {
 public:
  static void install(const char* name) {
    void** const slot = testing_support::importSlotOf(GetModuleHandleW(nullptr), name);
    if (!slot || real_) return;
    auto& typed = *reinterpret_cast<Function*>(slot);
    real_ = typed;
    static testing_support::ImportSlot<Function> held(typed, call);
  }

 private:
  using Function = Result(WINAPI*)(Arguments...);
  static Result WINAPI call(Arguments... arguments) {
    if (!SystemFaults::isNext()) return real_(arguments...);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return (Result)Failed;  // NOLINT: an integer or a handle
  }
  static inline Function real_ = nullptr;
};

#define CORVIX_SEAM(function, failed)                              \
  {                                                                \
    struct Name;                                                   \
    Seam<Name, failed, decltype(&::function)>::install(#function); \
  }

// What closes and deletes always does.
void installSeams() {
  constexpr LONG_PTR kNone = -1;  // INVALID_HANDLE_VALUE
  CORVIX_SEAM(CreateFileW, kNone)
  CORVIX_SEAM(ReOpenFile, kNone)
  CORVIX_SEAM(DuplicateHandle, 0)
  CORVIX_SEAM(GetTempPathW, 0)
  CORVIX_SEAM(GetTempFileNameW, 0)
  CORVIX_SEAM(GetFileSizeEx, 0)
  CORVIX_SEAM(GetFileInformationByHandle, 0)
  CORVIX_SEAM(ReadFile, 0)
  CORVIX_SEAM(WriteFile, 0)
  CORVIX_SEAM(SetFilePointerEx, 0)
  CORVIX_SEAM(SetEndOfFile, 0)
  CORVIX_SEAM(GetModuleFileNameW, 0)
  CORVIX_SEAM(RegCreateKeyExW, ERROR_ACCESS_DENIED)
  CORVIX_SEAM(RegOpenKeyExW, ERROR_ACCESS_DENIED)
  CORVIX_SEAM(RegQueryValueExW, ERROR_ACCESS_DENIED)
  CORVIX_SEAM(RegGetValueW, ERROR_ACCESS_DENIED)
  CORVIX_SEAM(RegSetValueExW, ERROR_ACCESS_DENIED)
  CORVIX_SEAM(SetTimer, 0)
  CORVIX_SEAM(CreateThread, 0)
  CORVIX_SEAM(CreateEventW, 0)
  CORVIX_SEAM(CreateCompatibleDC, 0)
  CORVIX_SEAM(CreateDIBSection, 0)
  CORVIX_SEAM(CreateCompatibleBitmap, 0)
  CORVIX_SEAM(SelectObject, 0)
  CORVIX_SEAM(CreatePen, 0)
  CORVIX_SEAM(ExtCreatePen, 0)
  CORVIX_SEAM(CreateSolidBrush, 0)
  CORVIX_SEAM(CreateRectRgn, 0)
  CORVIX_SEAM(ExtCreateRegion, 0)
  CORVIX_SEAM(CreatePolygonRgn, 0)
  CORVIX_SEAM(PathToRegion, 0)
  CORVIX_SEAM(BeginPath, 0)
  CORVIX_SEAM(EndPath, 0)
  CORVIX_SEAM(StrokePath, 0)
  CORVIX_SEAM(FillPath, 0)
  CORVIX_SEAM(CombineRgn, 0)
  CORVIX_SEAM(ExtSelectClipRgn, 0)
  CORVIX_SEAM(SelectClipRgn, 0)
  CORVIX_SEAM(GetClipRgn, kNone)
  CORVIX_SEAM(GetRegionData, 0)
  CORVIX_SEAM(SaveDC, 0)
  CORVIX_SEAM(MoveToEx, 0)
  CORVIX_SEAM(LineTo, 0)
  CORVIX_SEAM(FillRect, 0)
  CORVIX_SEAM(PatBlt, 0)
  CORVIX_SEAM(BitBlt, 0)
  CORVIX_SEAM(StretchBlt, 0)
  CORVIX_SEAM(StretchDIBits, 0)
  CORVIX_SEAM(SetDIBitsToDevice, 0)
  CORVIX_SEAM(GetDC, 0)
  CORVIX_SEAM(CreateFontIndirectW, 0)
  CORVIX_SEAM(GetTextMetricsW, 0)
  CORVIX_SEAM(GetObjectW, 0)
  CORVIX_SEAM(GetGlyphOutlineW, GDI_ERROR)
  CORVIX_SEAM(GetGlyphIndicesW, GDI_ERROR)
  CORVIX_SEAM(GetFontData, GDI_ERROR)
  CORVIX_SEAM(GetCharABCWidthsI, 0)
  CORVIX_SEAM(EnumFontFamiliesExW, 0)
  CORVIX_SEAM(MoveFileExW, 0)
  CORVIX_SEAM(FindFirstFileExW, kNone)
  CORVIX_SEAM(GetFullPathNameW, 0)
  CORVIX_SEAM(LoadLibraryExW, 0)
  CORVIX_SEAM(CreateWindowExW, 0)
}

// GDI+'s own table, each function behind the same count.
struct GdiPlusSeams {
  static inline const gdiplus::Table* real = nullptr;

  GdiPlusSeams() {
    real = gdiplus::table();
    if (!real) return;
    static gdiplus::Table hooked;
#define CORVIX_HOOK(name) hooked.name = &Hook<&gdiplus::Table::name>::call;
    CORVIX_GDIPLUS_FUNCTIONS(CORVIX_HOOK)
    CORVIX_HOOK(GdiplusStartup)
#undef CORVIX_HOOK
    hooked.GdiplusShutdown = real->GdiplusShutdown;
#define CORVIX_KEEP(name) hooked.name = real->name;
    CORVIX_KEEP(GdipDeleteMatrix)
    CORVIX_KEEP(GdipDeletePen)
    CORVIX_KEEP(GdipDeleteBrush)
    CORVIX_KEEP(GdipDeleteGraphics)
    CORVIX_KEEP(GdipDeletePath)
    CORVIX_KEEP(GdipDeleteRegion)
    CORVIX_KEEP(GdipDisposeImage)
    CORVIX_KEEP(GdipDisposeImageAttributes)
    CORVIX_KEEP(GdipBitmapUnlockBits)
    CORVIX_KEEP(GdipFree)
#undef CORVIX_KEEP
    gdiplus::replaceTable(&hooked);
  }
  ~GdiPlusSeams() { gdiplus::replaceTable(nullptr); }

  template <auto member>
  struct Hook;
  template <class Result, class... Arguments, Result (WINAPI* gdiplus::Table::*member)(Arguments...)>
  struct Hook<member> {
    static Result WINAPI call(Arguments... arguments) {
      if (!SystemFaults::isNext()) return (real->*member)(arguments...);
      if constexpr (std::is_same_v<Result, Gdiplus::GpStatus>) return Gdiplus::GenericError;
      return Result();
    }
  };
};

u32 openHandles() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return count;
}

TEST(SystemFailure, SweepOverEveryOperation) {
  const testing_support::OwnRegistry registry;
  installSeams();
  const GdiPlusSeams gdiPlus;
  int total = 0;
  for (const PublicOperation& operation : testing_support::publicOperations()) {
    SCOPED_TRACE(operation.name);
    const testing_support::OwnTempFolder temporary;
    for (int i = 0; i < 2; ++i) operation.call();  // what is made once is made now
    const int freeObjects = operation.draws ? testing_support::freeGdiObjects() : 0;
    const u32 handles = openHandles();
    testing_support::SweepSteps steps;
    const testing_support::Findings findings;
    for (bool wasHit = true; wasHit && findings.none(); steps.next()) {
      SCOPED_TRACE(steps.at());
      SystemFaults::made = 0;
      SystemFaults::refused = steps.at();
      const testing_support::HeapFaults heap;
      operation.call();
      wasHit = SystemFaults::made >= steps.at();
      SystemFaults::refused = INT_MAX;
      EXPECT_EQ(heap.liveBlocks(), 0);
      EXPECT_EQ(allocCSProc().heldCount(), 0u);
      EXPECT_EQ(dataCSProc().heldCount(), 0u);
      total += wasHit;
    }
    EXPECT_LE(openHandles(), handles);
    EXPECT_GE(operation.draws ? testing_support::freeGdiObjects() : 0, freeObjects);
    EXPECT_EQ(temporary.files(), 0);
  }
  RecordProperty("failures", total);
  EXPECT_GT(total, 150);
}

}  // namespace
}  // namespace corvix
