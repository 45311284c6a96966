#include "shell/Notifications.h"

#include "core/baselib/objects/GlobalSender.h"
#include "shell/Shell.h"

namespace corvix {

namespace {

// Made at load: a notification that nobody listens to has no time for a look whether they are.
#define CORVIX_NOTIFICATION(notification, name, Owner, Listener) {Owner::classInfo(), name},
GlobalSender senders[kShellNotifications] = {CORVIX_SHELL_NOTIFICATIONS(CORVIX_NOTIFICATION)};
#undef CORVIX_NOTIFICATION

}  // namespace

BNotifySender& shellNotifications(ShellNotification notification) {
  return senders[static_cast<u32>(notification)].get();
}

}  // namespace corvix
