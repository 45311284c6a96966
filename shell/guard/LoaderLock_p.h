// The lock that the system's loader holds while it loads a module. A crash inside the loader leaves it locked, and no
// thread starts or ends from then on: LoaderLockDepth gives back what was taken since it was made.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

class LoaderLockDepth {
 public:
  LoaderLockDepth() noexcept;
  void restore() const noexcept;  // on the same thread

 private:
  u32 depth_;
};

}  // namespace corvix
