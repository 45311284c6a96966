// The shell's notifications: each has a list of the shell's own and a process-wide one that every module
// finds. The own list is told first. A handler's notify::kStop ends the delivery on both; the operation of
// IShell that raises a notification returns what came of it.
//
//   IShell::getInstance()->sender(ShellNotification::Initialize).addListener(listener);
//   shellNotifications(ShellNotification::Initialize).addListener(listener);
#pragma once

#include "shell/Actions.h"
#include "shell/Progress.h"

namespace corvix {

class IDocument;
class IShell;

// With the name of the process-wide list and the interface of its listeners.
enum class ShellNotification : u32 {
  Initialize,          // "OnInitialize": IShellListener
  UnInitialize,        // "OnUnInitialize": IShellListener
  SysMsgBox,           // "OnSysMsgBox": IDialogListener
  ShowCustomDialog,    // "OnShowCustomDialog": IDialogListener
  ShowConfirmation,    // "OnShowConfirmation": IDialogListener
  ChangeStatusText,    // "OnChangeStatusText": IStatusListener
  ValidateAction,      // "OnValidateAction": IActionTarget
  ProcessAction,       // "OnProcessAction": IActionTarget
  StartProgress,       // "onStartProgress": IProgressCallback
  ChangeProgress,      // "onChangeProgress": IProgressCallback
  UpdateProgress,      // "onUpdateProgress": IProgressCallback
  StopProgress,        // "onStopProgress": IProgressCallback
  PreValidateAction,   // "preValidateAction": IActionListener
  PostValidateAction,  // "postValidateAction": IActionListener
  PreProcessAction,    // "preProcessAction": IActionListener
  PostProcessAction,   // "postProcessAction": IActionListener
  OpenDocument,        // "OnOpenDocument": IDocumentListener
};
constexpr u32 kShellNotifications = 17;

// The process-wide list of a notification. Kept in the global data under IShell, the four around actions under
// IActionTarget, and the name above. [any thread]
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

struct CustomDialogRequest {
  const wchar_t* interfaceName;  // of the dialog: "Dialog.OpenSave"
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

}  // namespace corvix
