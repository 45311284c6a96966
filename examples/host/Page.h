// The test page: every kind of line, fill, clip and image, and what a plug-in adds. Drawn twice, through plain GDI and
// through GDI+, it shows what the two have in common.
#pragma once

#include "examples/host/PageCells.h"
#include "shell/Shell.h"

namespace host {

// What of one page has been drawn: cells in all, and those that the context does not offer.
struct PageResult {
  int cells = 0;
  int refused = 0;
};

// The size of one page in pixels.
inline constexpr int kPageWidth = 480;
inline constexpr int kPageHeight = 788;

// Draws a page with its title.
PageResult drawPage(corvix::IAGDC& context, const wchar_t* title, const PageTools& tools);

// A memory context with the page drawn in it, through GDI+ or plain GDI; empty when it cannot be had.
corvix::Ref<corvix::IAGDC> makePage(corvix::IPluginManager& manager, bool throughGdiPlus, PageResult& result);

}  // namespace host
