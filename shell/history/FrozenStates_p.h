// FrozenStates: states on a temporary file, which is there as long as one of them is. The last one frozen is the first
// one thawed, so that nothing is left over between them.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/TempStorage.h"
#include "shell/history/State.h"

namespace corvix {

class FrozenStates {
 public:
  static constexpr u32 kNone = 0xFFFFFFFF;

  // Where it lies then; kNone when it is as it was.
  u32 freeze(IState& state) noexcept;

  // False when it is as it was. `at` is that of the last one frozen.
  bool thaw(IState& state, u32 at) noexcept;

  // It is no more; likewise the last one.
  void drop(u32 at) noexcept;

 private:
  static constexpr u32 kLargest = 0x7FFFFFFF;

  bool goTo(u32 at);

  Ref<BTempStorage> storage_;
  u32 end_ = 0;
};

}  // namespace corvix
