// Software clipping: keeps what lies far outside the visible area from the device, whose numbers end sooner than
// those of a double. What is left draws the same pixels.
#pragma once

#include "graphics/path/Path_p.h"

namespace corvix {

// What of a line is dashes: dash and gap lengths in turn, an even count with a sum above 0, and the place in them where
// each figure begins. No lengths: all of it.
struct DashPattern {
  const double* lengths = nullptr;
  std::size_t count = 0;
  double phase = 0;
};

// The lines, in user units, that a stroke of `path` draws within `area`, which is in device pixels after `matrix` and
// leaves room for the pen around what is visible. Dashes are cut here, so that their pen is a solid one. Throws
// std::bad_alloc.
Path clipStroke(const Path& path, const Matrix& matrix, const Box& area, const DashPattern& dash);

// The closed figures that fill within `area` what `path` fills, under either rule.
Path clipFill(const Path& path, const Matrix& matrix, const Box& area);

}  // namespace corvix
