// The test page: every kind of line, fill, clip and image, and what a plug-in adds. Drawn once on every kind of
// context, it shows what they have in common.
#pragma once

#include "examples/host/PageCells.h"
#include "graphics/IAGDCCreator.h"
#include "shell/Shell.h"

namespace host {

// What of one page has been drawn: cells in all, and those that the context does not offer.
struct PageResult {
  int cells = 0;
  int refused = 0;
};

// The size of one page in pixels.
inline constexpr int kPageWidth = 480;
inline constexpr int kPageHeight = 936;

// Draws a page with its title.
PageResult drawPage(corvix::IAGDC& context, const wchar_t* title, const PageTools& tools);

// The kinds of context that the page is drawn on.
struct PageKind {
  const wchar_t* title;
  const wchar_t* creator;
  corvix::u32 required;
};
inline constexpr PageKind kPageKinds[] = {{L"Plain GDI", L"AGDC.Memory", 0},
                                          {L"GDI+", L"AGDC.Memory", corvix::capability::kGdiPlus},
                                          {L"Smooth", L"AGDC.SmoothMemory", 0}};
inline constexpr int kPageCount = 3;

// A memory context with the page drawn in it; empty when it cannot be had.
corvix::Ref<corvix::IAGDC> makePage(corvix::IPluginManager& manager, const PageKind& kind, PageResult& result);

}  // namespace host
