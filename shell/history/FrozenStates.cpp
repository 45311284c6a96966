#include "shell/history/FrozenStates_p.h"

#include "core/baselib/system/ForeignCall.h"

namespace corvix {

namespace {
constexpr wchar_t kPlace[] = L"IState";
}

bool FrozenStates::goTo(u32 at) {
  if (!storage_) storage_ = make<BTempStorage>();
  return (storage_->isOpen() || storage_->open()) && storage_->seek(at);
}

u32 FrozenStates::freeze(IState& state) noexcept {
  if (end_ > kLargest) return kNone;
  const u32 at = end_;
  const bool isFrozen = callForeign(codeOf(&state), kPlace, [&] { return goTo(at) && state.freeze(storage_.get()); });
  if (isFrozen) end_ = storage_->getPosition();
  return isFrozen ? at : kNone;
}

bool FrozenStates::thaw(IState& state, u32 at) noexcept {
  const bool isThawed = callForeign(codeOf(&state), kPlace, [&] { return goTo(at) && state.thaw(storage_.get()); });
  if (isThawed) drop(at);
  return isThawed;
}

void FrozenStates::drop(u32 at) noexcept {
  end_ = at;
  if (end_ == 0) storage_.reset();
}

}  // namespace corvix
