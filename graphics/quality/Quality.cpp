#include "graphics/quality/Quality_p.h"

namespace corvix {

Quality& quality() noexcept {
  static Quality values;
  return values;
}

}  // namespace corvix
