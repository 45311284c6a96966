#include "shell/Notifications.h"

#include "core/baselib/objects/GlobalSender.h"
#include "shell/Shell.h"

namespace corvix {

BNotifySender& shellNotifications(ShellNotification notification) {
  static const stype_info& shell = IShell::classInfo();
  static const stype_info& action = IActionTarget::classInfo();
  static GlobalSender senders[kShellNotifications] = {
      {shell, "OnInitialize"},       {shell, "OnUnInitialize"},      {shell, "OnSysMsgBox"},
      {shell, "OnShowCustomDialog"}, {shell, "OnShowConfirmation"},  {shell, "OnChangeStatusText"},
      {shell, "OnValidateAction"},   {shell, "OnProcessAction"},     {shell, "onStartProgress"},
      {shell, "onChangeProgress"},   {shell, "onUpdateProgress"},    {shell, "onStopProgress"},
      {action, "preValidateAction"}, {action, "postValidateAction"}, {action, "preProcessAction"},
      {action, "postProcessAction"}, {shell, "OnOpenDocument"},
  };
  return senders[static_cast<u32>(notification)].get();
}

}  // namespace corvix
