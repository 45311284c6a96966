// How long a test may take: `soak(3000, 1000000)` rounds are 3,000 in `make test` and a million in `make soak`.
#pragma once

#include <cstdlib>

namespace corvix::testing_support {

inline int soak(int usual, int lengthy) {
  static const char* const wanted = std::getenv("CORVIX_SOAK");
  return wanted && *wanted == '1' ? lengthy : usual;
}

}  // namespace corvix::testing_support
