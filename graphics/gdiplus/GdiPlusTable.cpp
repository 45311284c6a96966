#include "graphics/gdiplus/GdiPlusTable_p.h"

#include <atomic>

namespace corvix::gdiplus {

namespace {

std::atomic<const Table*> inForce{nullptr};

template <class Function>
bool find(HMODULE library, const char* name, Function& function) noexcept {
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  return function != nullptr;
}

// The library stays loaded for good: contexts may go while the process ends.
const Table* systemTable() noexcept {
  static const Table* const loaded = []() noexcept -> const Table* {
    static Table found;
    const HMODULE library = LoadLibraryExW(L"gdiplus.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!library) return nullptr;
    bool isWhole = find(library, "GdiplusStartup", found.GdiplusStartup) &&
                   find(library, "GdiplusShutdown", found.GdiplusShutdown);
#define CORVIX_GDIPLUS_FIND(name) isWhole = isWhole && find(library, #name, found.name);
    CORVIX_GDIPLUS_FUNCTIONS(CORVIX_GDIPLUS_FIND)
#undef CORVIX_GDIPLUS_FIND
    return isWhole ? &found : nullptr;
  }();
  return loaded;
}

enum class Answer { Unknown, No, Yes };
std::atomic<Answer> penTransforms{Answer::Unknown};

// A level line, widened by a pen of 10 whose transform halves it, is 5 or, as joins and anti-aliasing may add to it, a
// little more high; 10 when the transform is ignored.
Answer tryPenTransform() noexcept {
  const Table& gp = flat();
  Gdiplus::GpPen* pen = nullptr;
  Gdiplus::GpPath* path = nullptr;
  Gdiplus::RectF bounds(0, 0, 0, 0);
  gp.GdipCreatePen1(0xFF000000, 10.0F, Gdiplus::UnitWorld, &pen);
  gp.GdipCreatePath(Gdiplus::FillModeAlternate, &path);
  const bool isKnown = pen && path && gp.GdipScalePenTransform(pen, 0.5F, 0.5F, Gdiplus::MatrixOrderAppend) == 0 &&
                       gp.GdipAddPathLine(path, 0, 0, 100, 0) == 0 &&
                       gp.GdipWidenPath(path, pen, nullptr, 0.25F) == 0 &&
                       gp.GdipGetPathWorldBounds(path, &bounds, nullptr, nullptr) == 0;
  if (path) gp.GdipDeletePath(path);
  if (pen) gp.GdipDeletePen(pen);
  if (!isKnown) return Answer::Unknown;
  return bounds.Height > 8.0F ? Answer::No : Answer::Yes;
}

}  // namespace

const Table* table() noexcept {
  const Table* const other = inForce.load(std::memory_order_acquire);
  return other ? other : systemTable();
}

const Table& flat() noexcept { return *table(); }

void replaceTable(const Table* other) noexcept { inForce.store(other, std::memory_order_release); }

Session::Session() noexcept {
  const Table* const gp = table();
  if (!gp) return;
  Gdiplus::GdiplusStartupInput input;  // version 1, no callback, the background thread as usual
  if (gp->GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok) token_ = 0;
}

Session::~Session() {
  if (token_) flat().GdiplusShutdown(token_);
}

bool penTransformsWork() noexcept {
  Answer answer = penTransforms.load(std::memory_order_relaxed);
  if (answer == Answer::Unknown) {
    answer = tryPenTransform();
    penTransforms.store(answer, std::memory_order_relaxed);
  }
  return answer != Answer::No;
}

void forgetPenTransforms() noexcept { penTransforms = Answer::Unknown; }

void assumePenTransformsWork(bool work) noexcept { penTransforms = work ? Answer::Yes : Answer::No; }

}  // namespace corvix::gdiplus
