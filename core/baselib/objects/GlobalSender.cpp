#include "core/baselib/objects/GlobalSender.h"

#include "core/baselib/objects/GlobalData_p.h"

#include <new>

namespace corvix {

BNotifySender& GlobalSender::get() noexcept {
  // Looked up anew only after a change of the global data: the answer is that of a look-up each time.
  const u32 change = globalDataChanges();
  if (seenChange_.load(std::memory_order_acquire) == change) return *found_.load(std::memory_order_relaxed);

  auto* sender = static_cast<BNotifySender*>(BGlobalData::getItem(owner_, name_));
  if (!sender) {
    sender = &own_;
    try {
      BGlobalData::setItem(owner_, name_, sender, nullptr);
    } catch (const std::bad_alloc&) {
      return own_;  // entered by the next call that has the memory for it
    }
  }
  found_.store(sender, std::memory_order_relaxed);
  seenChange_.store(change, std::memory_order_release);
  return *sender;
}

}  // namespace corvix
