#include "graphics/quality/Quality.h"

namespace corvix {

Quality& quality() noexcept {
  static Quality values;
  return values;
}

}  // namespace corvix
