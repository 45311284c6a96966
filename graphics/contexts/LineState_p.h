// How lines are drawn; what pens are made from.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "graphics/IAGDC.h"

#include <algorithm>
#include <vector>

namespace corvix {

struct LineState {
  static constexpr i32 kMostDashes = 1024;

  double width = 1;
  double miterLimit = 10;
  double dashPhase = 0;
  i32 cap = kCapFlat;
  i32 join = kJoinMiter;
  bool isDashed = false;
  double dashPeriod = 0;                              // the sum of the lengths
  std::vector<double, HeapAllocator<double>> dashes;  // as they were set

  // False, with everything as it was, for lengths that make no pattern. Throws std::bad_alloc.
  bool setDash(const double* lengths, i32 count, double phase) {
    if (count < 0 || count > kMostDashes || (count && !lengths) || !std::isfinite(phase)) return false;
    double sum = 0;
    for (i32 i = 0; i < count; ++i) {
      if (!(lengths[i] >= 0 && std::isfinite(lengths[i]))) return false;
      sum += lengths[i];
    }
    const auto wanted = static_cast<std::size_t>(count);
    if (wanted > dashes.capacity()) dashes.reserve(std::max(wanted, 2 * dashes.capacity()));
    dashes.assign(lengths, lengths + count);
    dashPhase = count ? phase : 0;
    dashPeriod = sum;
    isDashed = sum > 0;  // nothing but zeroes would be all dash ends: a solid line
    return true;
  }
};

}  // namespace corvix
