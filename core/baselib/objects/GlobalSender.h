// GlobalSender: this module's way to one process-wide sender. The first module that asks makes the sender and
// registers it in the global data; every other finds that one. Have one static GlobalSender per list.
#pragma once

#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/NotifySender.h"

namespace corvix {

class GlobalSender {
 public:
  // `name` is a literal.
  GlobalSender(const stype_info& owner, const char* name) noexcept : owner_(owner), name_(name) {}

  CORVIX_API BNotifySender& get() noexcept;

 private:
  const stype_info& owner_;
  const char* name_;
  std::atomic<u32> seenChange_{0};  // of the global data, before `found_` was looked up
  std::atomic<BNotifySender*> found_{nullptr};
  BNotifySender own_;  // used if no other module came first
};

}  // namespace corvix
