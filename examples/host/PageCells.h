// One cell of the test page for each kind of thing that a context draws. Each answers false when its context does not
// offer what it needs.
#pragma once

#include "examples/plugins/rosette/IPagePart.h"
#include "graphics/fonts/FontMachine.h"

#include <vector>

namespace host {

// What cells draw with besides the context; either may be null.
struct PageTools {
  example::IPagePart* part;
  corvix::IFMFont* font;
};

struct Cell {
  const wchar_t* caption;
  bool (*draw)(corvix::IAGDC& context, const corvix::Box& box, const PageTools& tools);
};

const std::vector<Cell>& pageCells();

}  // namespace host
