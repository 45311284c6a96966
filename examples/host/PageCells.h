// One cell of the test page for each kind of thing that a context draws. Each answers false when its context does not
// offer what it needs.
#pragma once

#include "examples/plugins/rosette/IPagePart.h"

#include <vector>

namespace host {

struct Cell {
  const wchar_t* caption;
  bool (*draw)(corvix::IAGDC& context, const corvix::Box& box, example::IPagePart* part);
};

const std::vector<Cell>& pageCells();

}  // namespace host
