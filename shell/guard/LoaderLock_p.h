// The lock that the system's loader holds while it loads a module. A crash inside the loader leaves it locked, and no
// thread starts or ends from then on: LoaderLockDepth gives back what was taken since it was made.
#pragma once

#include "core/baselib/Api.h"

#include <windows.h>

namespace corvix {

class LoaderLockDepth {
 public:
  // Nearly always nobody has it.
  LoaderLockDepth() noexcept : depth_(lock_ && lock_->OwningThread ? ofThisThread() : 0) {}
  void restore() const noexcept;  // on the same thread

 private:
  static u32 ofThisThread() noexcept;

  static CRITICAL_SECTION* const lock_;  // null until the library's statics are made
  u32 depth_;
};

}  // namespace corvix
