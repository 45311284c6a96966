// IMemoryShell: what the memory code needs of the shell, which fills it.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

class IMemoryShell {
 public:
  // Memory ran out and nobody could give any back: asks the user whether to try again. `kind` is 0. Called
  // under the lock of `allocCSProc`. [any thread]
  virtual bool askToRetry(u32 kind) = 0;

  // Has the function called on the shell's thread, from its message loop; on that thread itself it may be called
  // at once. False if that cannot be arranged; the function is then not called. [any thread]
  virtual bool runOnShellThread(void (*function)(void* argument), void* argument) = 0;

 protected:
  ~IMemoryShell() = default;
};

// Null takes the shell away; its operations must not be under way then.
void setMemoryShell(IMemoryShell* shell) noexcept;

// Null while there is no shell.
IMemoryShell* memoryShell() noexcept;

}  // namespace corvix
