// BGlobalData: named pointers of the whole process, kept under a class and a short name. It is how singletons
// and shared lists are found from every module.
//
// The registry owns nothing but the right to call a value's destructor. All operations, destructors
// included, run under the registry's own lock, which is recursive: a destructor may call back. [any thread]
#pragma once

#include "core/baselib/identity/StypeInfo.h"

namespace corvix {

class CORVIX_API BGlobalData {
 public:
  using Destructor = void (*)(void* value);

  BGlobalData() = delete;

  // The value, or null when none is set.
  static void* getItem(const stype_info& owner, const char* name) noexcept;

  // Stores or replaces. A value that is replaced is first given to its destructor, if it has one, even when
  // the new value is the same pointer.
  static void setItem(const stype_info& owner, const char* name, void* value, Destructor destructor);

  // Gives every value to its destructor and forgets them all.
  static void destroyAll();
};

}  // namespace corvix
