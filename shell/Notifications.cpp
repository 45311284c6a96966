#include "shell/Notifications.h"

#include "core/baselib/objects/GlobalSender.h"
#include "shell/Shell.h"

namespace corvix {

namespace {

// Made at load: a notification that nobody listens to has no time for a look whether they are.
GlobalSender senders[kShellNotifications] = {
    {IShell::classInfo(), "OnInitialize"},
    {IShell::classInfo(), "OnUnInitialize"},
    {IShell::classInfo(), "OnSysMsgBox"},
    {IShell::classInfo(), "OnShowCustomDialog"},
    {IShell::classInfo(), "OnShowConfirmation"},
    {IShell::classInfo(), "OnChangeStatusText"},
    {IShell::classInfo(), "OnValidateAction"},
    {IShell::classInfo(), "OnProcessAction"},
    {IShell::classInfo(), "onStartProgress"},
    {IShell::classInfo(), "onChangeProgress"},
    {IShell::classInfo(), "onUpdateProgress"},
    {IShell::classInfo(), "onStopProgress"},
    {IActionTarget::classInfo(), "preValidateAction"},
    {IActionTarget::classInfo(), "postValidateAction"},
    {IActionTarget::classInfo(), "preProcessAction"},
    {IActionTarget::classInfo(), "postProcessAction"},
    {IShell::classInfo(), "OnOpenDocument"},
};

}  // namespace

BNotifySender& shellNotifications(ShellNotification notification) {
  return senders[static_cast<u32>(notification)].get();
}

}  // namespace corvix
