// BAutoRealizePool: releases objects some seconds later, on the shell's thread.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class CORVIX_API BAutoRealizePool {
 public:
  BAutoRealizePool() = delete;

  // Takes over one reference of the caller's and drops it on the (ticks + 1)-th tick from now, one a second,
  // from the message loop of the shell's thread. False when there is no memory for the entry: the reference
  // stays the caller's. [any thread]
  static bool add(IBRemoteRemovable* object, u32 ticks) noexcept;

  // Drops every reference now, on the calling thread, and those that are added by that. A program calls it
  // before it lets its modules go. [shell thread, or any thread that may release the objects]
  static void Clear();
};

}  // namespace corvix
