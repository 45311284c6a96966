// ShellThread: a way back to the thread that made it, through its message loop.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

class ShellThread {
 public:
  ShellThread() noexcept;
  ~ShellThread();
  ShellThread(const ShellThread&) = delete;
  ShellThread& operator=(const ShellThread&) = delete;

  // At once on the thread itself, else when its message loop comes to it. False if it never will: then the
  // function is not called. [any thread]
  bool run(void (*function)(void* argument), void* argument) const;

 private:
  u32 thread_;
  void* window_;  // a message-only one; null when the system has none to give
};

}  // namespace corvix
