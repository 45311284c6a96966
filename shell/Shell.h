// IShell: the one object through which a program and its plug-ins reach everything else.
#pragma once

#include "core/settings/Settings.h"
#include "shell/Notifications.h"
#include "shell/PluginManager.h"

namespace corvix {

class IDocManager;
class IGUIManager;
class IStateHistory;

class CORVIX_API IShell : public BSmartObject {
  CORVIX_IDENTITY(IShell, 0x8E1A45D9, 0x4D26B7F3, 0x95C80E6B, 0x47F3A210, BSmartObject)

 public:
  // The shell of the process. The first call makes it and starts it: the library's own descriptor and those of
  // the folder "plugins" beside the executable are read, settings are bound to the registry, who declares
  // "IPluginManagerAfterInit" is told, "OnInitialize" is raised. That call must come from the main thread,
  // which is the shell's thread from then on, before any other uses the shell. The shell goes when the process
  // ends: it is not released. Null once it is gone, and when the process ends without one.
  static IShell* getInstance();

  // Before the first `getInstance`: nobody is there to answer message boxes while the shell starts either.
  static void startUnattended() noexcept;

  // Before the first `getInstance`: plug-ins are found and described, but none of their code ever runs. Nobody is told
  // of the start or the end, and making an object of a plug-in answers null.
  static void startDescribing() noexcept;

  // Before the first `getInstance`, for developers: watches which objects that are made by name nobody releases. They
  // are in the log when the shell shuts down, and IObjectWatch tells of them at any time (shell/ObjectWatch.h).
  static void watchObjects() noexcept;

  // Adds no reference.
  virtual IPluginManager* pluginManager() const noexcept = 0;

  // A program that runs without a user (a service, a build step, a test) says so before anything can go
  // wrong: what would be shown in a message box is then left to the log and to `IPluginModule::reason`.
  virtual bool isUnattended() const noexcept = 0;
  virtual void setUnattended(bool unattended) noexcept = 0;

  // None of these adds a reference. The managers are made when they are asked for first, from the first module that
  // declares an object of theirs, and stand until the shell is gone: "IActionManager.Instance", "IGUIManager.Instance",
  // "IDocManager.Instance", "IStateHistory.GetInstance". The library has all of its own behind those of plug-ins but
  // the one of windows, which comes from plug-ins alone. Null when none declares them, while one is being made, and
  // when the process ends before they were asked for; the action manager is then the library's.
  virtual IBSettings* settings() const noexcept = 0;
  virtual IActionManager* actionManager() = 0;
  virtual IGUIManager* guiManager() = 0;
  virtual IDocManager* docManager() = 0;
  virtual IStateHistory* stateHistory() = 0;

  // To be called at the end of `main`, while everything still stands: does waiting tasks, raises
  // "OnUnInitialize" and tells who declares "IPluginManagerBeforeDestroy". The second call does nothing. A
  // program that ends without it has "OnUnInitialize" raised when the library goes, and nobody created then.
  virtual void shutDown() = 0;

  // Has the shell's message loop call `function` on the shell's thread, in the order of the calls, also when
  // this is that thread. An exception that leaves the function is named in the log. False when the shell is shut
  // down or memory is short; the function is then not called. Nor is it when the process ends before. [any thread]
  virtual bool runOnShellThread(void (*function)(void* argument), void* argument) = 0;

  // For programs without a message loop: does what waits now. [shell thread]
  virtual void runWaitingTasks() = 0;

  // Memory ran out: asks the user whether to try again; false in a program without a user. `kind` is 0.
  // [any thread]
  virtual bool askToRetry(u32 kind) = 0;

  // The shell's own list of a notification. [any thread]
  virtual BNotifySender& sender(ShellNotification notification) noexcept = 0;

  // Raising the notifications. Each returns notify::kStop, kTaken or kGoOn, see shell/Notifications.h.
  virtual int initialize() = 0;
  virtual int unInitialize() = 0;
  virtual int sysMsgBox(MessageBoxRequest& request) = 0;

  // When no listener answers, the objects declared under the dialog's name are asked, in their order, until one does;
  // not in a program without a user.
  virtual int showCustomDialog(CustomDialogRequest& request) = 0;
  virtual int showConfirmation(ConfirmationRequest& request) = 0;
  virtual int changeStatusText(i32 pane, const wchar_t* text) = 0;
  virtual int validateAction(IAction& action, IActionSender* actionSender) = 0;
  virtual int processAction(IAction& action, IActionSender* actionSender) = 0;
  virtual int startProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) = 0;
  virtual int changeProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) = 0;
  virtual int updateProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) = 0;
  virtual int stopProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) = 0;
  virtual int preValidateAction(IAction& action, IActionSender* actionSender) = 0;
  virtual int postValidateAction(IAction& action, IActionSender* actionSender) = 0;
  virtual int preProcessAction(IAction& action, IActionSender* actionSender) = 0;
  virtual int postProcessAction(IAction& action, IActionSender* actionSender) = 0;
  virtual int openDocument(IDocument* document, const wchar_t* location) = 0;

  // A number that no other progress of the process has. Counts from 1. [any thread]
  virtual i32 newProgressId() noexcept = 0;

  // Raises "OnSysMsgBox"; when nobody takes it, the user sees the box. Returns the answer; in a program
  // without a user that is `silentAnswer`, an ID... of the system.
  virtual i32 messageBox(const wchar_t* text, const wchar_t* caption, u32 style, i32 silentAnswer) = 0;

  // Offers the arguments (without the program's name) in order to the processors declared as
  // "CommandLine.Processors", those of the framework's own manufacturer before others. Each argument goes to
  // the first that takes it. Returns how many nobody took.
  virtual i32 processCommandLine(const wchar_t* const* arguments, i32 count) = 0;
};

}  // namespace corvix
