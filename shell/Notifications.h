// The shell's notifications: each has a list of the shell's own and a process-wide one that every module
// finds. The own list is told first, then the other. A handler's notify::kStop ends the delivery on its own list; the
// operation of IShell that raises a notification returns kStop when a handler of either did, else kTaken when one did.
//
//   IShell::getInstance()->sender(ShellNotification::Initialize).addListener(listener);
//   shellNotifications(ShellNotification::Initialize).addListener(listener);
#pragma once

#include "shell/Actions.h"
#include "shell/Progress.h"

namespace corvix {

class IDocument;
class IShell;

// The table of them: the notification, the name of its process-wide list, the class under which the global data keeps
// that, the interface of its listeners. A new one is a row at the end.
#define CORVIX_SHELL_NOTIFICATIONS(ROW)                                         \
  ROW(Initialize, "OnInitialize", IShell, IShellListener)                       \
  ROW(UnInitialize, "OnUnInitialize", IShell, IShellListener)                   \
  ROW(SysMsgBox, "OnSysMsgBox", IShell, IDialogListener)                        \
  ROW(ShowCustomDialog, "OnShowCustomDialog", IShell, IDialogListener)          \
  ROW(ShowConfirmation, "OnShowConfirmation", IShell, IDialogListener)          \
  ROW(ChangeStatusText, "OnChangeStatusText", IShell, IStatusListener)          \
  ROW(ValidateAction, "OnValidateAction", IShell, IActionTarget)                \
  ROW(ProcessAction, "OnProcessAction", IShell, IActionTarget)                  \
  ROW(StartProgress, "onStartProgress", IShell, IProgressCallback)              \
  ROW(ChangeProgress, "onChangeProgress", IShell, IProgressCallback)            \
  ROW(UpdateProgress, "onUpdateProgress", IShell, IProgressCallback)            \
  ROW(StopProgress, "onStopProgress", IShell, IProgressCallback)                \
  ROW(PreValidateAction, "preValidateAction", IActionTarget, IActionListener)   \
  ROW(PostValidateAction, "postValidateAction", IActionTarget, IActionListener) \
  ROW(PreProcessAction, "preProcessAction", IActionTarget, IActionListener)     \
  ROW(PostProcessAction, "postProcessAction", IActionTarget, IActionListener)   \
  ROW(OpenDocument, "OnOpenDocument", IShell, IDocumentListener)

#define CORVIX_NOTIFICATION(notification, name, Owner, Listener) notification,
enum class ShellNotification : u32 { CORVIX_SHELL_NOTIFICATIONS(CORVIX_NOTIFICATION) };
#undef CORVIX_NOTIFICATION

#define CORVIX_NOTIFICATION(notification, name, Owner, Listener) +1
constexpr u32 kShellNotifications = 0 CORVIX_SHELL_NOTIFICATIONS(CORVIX_NOTIFICATION);
#undef CORVIX_NOTIFICATION

// The interface of a notification's listeners: ListenerOf<ShellNotification::Initialize>::Type.
template <ShellNotification notification>
struct ListenerOf;

// The process-wide list of a notification. [any thread]
CORVIX_API BNotifySender& shellNotifications(ShellNotification notification);

class IShellListener : public IBTransportable {
  CORVIX_IDENTITY(IShellListener, 0xBC5C15D9, 0x216FC296, 0x93FB2197, 0xDAD00F15, IBTransportable)

 public:
  virtual int onInitialize(IShell& shell) = 0;    // every module is known, none need be loaded
  virtual int onUnInitialize(IShell& shell) = 0;  // everything still stands
};

// What is asked of the user. Texts are the asker's; who answers in the user's stead fills `answer` in and
// returns notify::kTaken.
struct MessageBoxRequest {
  const wchar_t* text;
  const wchar_t* caption;
  u32 style;   // the system's MB_...
  i32 answer;  // the system's ID...; what a program without a user goes on with
};

struct ConfirmationRequest {
  const wchar_t* text;
  const wchar_t* caption;
  bool isConfirmed;
};

// When no listener answers, the objects declared under the name are asked: see shell/gui/Dialog.h.
struct CustomDialogRequest {
  const wchar_t* interfaceName;  // of the dialog: "Dialog.OpenSave", or "OpenSave" alone
  IBTransportable* argument;     // what the dialog is about; may be null
  i32 answer;
};

class IDialogListener : public IBTransportable {
  CORVIX_IDENTITY(IDialogListener, 0x528D0AF2, 0xAA3466B0, 0xE40C5443, 0xDCD1150D, IBTransportable)

 public:
  virtual int onSysMsgBox(MessageBoxRequest& request) = 0;
  virtual int onShowCustomDialog(CustomDialogRequest& request) = 0;
  virtual int onShowConfirmation(ConfirmationRequest& request) = 0;
};

class IStatusListener : public IBTransportable {
  CORVIX_IDENTITY(IStatusListener, 0x3BE58583, 0x30F7B0D1, 0xB02A7A53, 0x39A5E9FE, IBTransportable)

 public:
  // `pane` is the part of the status bar, from 0.
  virtual int onChangeStatusText(i32 pane, const wchar_t* text) = 0;
};

class IDocumentListener : public IBTransportable {
  CORVIX_IDENTITY(IDocumentListener, 0xD373BF2C, 0x78F0BC9B, 0x695B5D89, 0x06DB2F83, IBTransportable)

 public:
  // `document` may be null when a program opens documents of its own kind.
  virtual int onOpenDocument(IDocument* document, const wchar_t* location) = 0;
};

#define CORVIX_NOTIFICATION(notification, name, Owner, Listener) \
  template <>                                                    \
  struct ListenerOf<ShellNotification::notification> {           \
    using Type = Listener;                                       \
  };
CORVIX_SHELL_NOTIFICATIONS(CORVIX_NOTIFICATION)
#undef CORVIX_NOTIFICATION

}  // namespace corvix
