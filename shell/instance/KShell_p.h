#pragma once

#include "core/baselib/memory/MemoryShell_p.h"
#include "core/suppliers/InternetAgent_p.h"
#include "shell/Shell.h"
#include "shell/actions/KActionManager_p.h"
#include "shell/guard/EarlierStarts_p.h"
#include "shell/instance/TaskQueue_p.h"
#include "shell/modules/KPluginManager_p.h"

#include <atomic>

namespace corvix {

class KShell final : public IShell, public IUserAlert, public IMemoryShell, public IInternetAgent {
  CORVIX_IDENTITY(KShell, 0x4690C2EB, 0x4F1BD573, 0x9A28E7F0, 0x6EC3518D, IShell)

 public:
  KShell();
  ~KShell() override;

  // Once; `module` is the library's own handle. Modules that are told meanwhile may use the shell.
  void start(void* module);
  void shutDown() override;

  IPluginManager* pluginManager() const noexcept override { return pluginManager_.get(); }
  bool isUnattended() const noexcept override;
  void setUnattended(bool unattended) noexcept override;
  IBSettings* settings() const noexcept override { return settings_.get(); }
  IActionManager* actionManager() override;
  IGUIManager* guiManager() override;
  IDocManager* docManager() override;
  IStateHistory* stateHistory() override;

  bool runOnShellThread(void (*function)(void*), void* argument) override { return tasks_.add(function, argument); }
  void runWaitingTasks() override { tasks_.runWaiting(); }
  bool askToRetry(u32 kind) override;
  i32 newProgressId() noexcept override { return nextProgressId_.fetch_add(1, std::memory_order_relaxed); }
  i32 messageBox(const wchar_t* text, const wchar_t* caption, u32 style, i32 silentAnswer) override;
  i32 processCommandLine(const wchar_t* const* arguments, i32 count) override;

  BNotifySender& sender(ShellNotification notification) noexcept override {
    return senders_[static_cast<u32>(notification)];
  }
  int initialize() override;
  int unInitialize() override;
  int sysMsgBox(MessageBoxRequest& request) override;
  int showCustomDialog(CustomDialogRequest& request) override;
  int showConfirmation(ConfirmationRequest& request) override;
  int changeStatusText(i32 pane, const wchar_t* text) override;
  int validateAction(IAction& action, IActionSender* actionSender) override;
  int processAction(IAction& action, IActionSender* actionSender) override;
  int startProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) override;
  int changeProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) override;
  int updateProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) override;
  int stopProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) override;
  int preValidateAction(IAction& action, IActionSender* actionSender) override;
  int postValidateAction(IAction& action, IActionSender* actionSender) override;
  int preProcessAction(IAction& action, IActionSender* actionSender) override;
  int postProcessAction(IAction& action, IActionSender* actionSender) override;
  int openDocument(IDocument* document, const wchar_t* location) override;

 private:
  const wchar_t* internetAgent() const noexcept override { return L"Corvix/1.00"; }
  i32 startWait() override;
  bool goOnWaiting(i32 progress) override;
  void endWait(i32 progress) override;

  // Managers that the shell found by name and keeps.
  enum Held { kActionManager, kGuiManager, kDocManager, kStateHistory, kHeldSlots = 8 };

  void readIni(const std::wstring& folder);
  void readEarlierStarts();
  void tellOfEarlierStarts();
  void logObjectsLeft();
  void show(const std::wstring& text, const wchar_t* caption) override;

  // Null while it is being made, too.
  template <class Manager>
  Manager* resolve(Held slot, const wchar_t* interfaceName);
  int askDialogs(CustomDialogRequest& request);

  template <class Listener, class Call>
  int deliver(ShellNotification notification, Call tell);

  // Tells the own list and then the process-wide one; what a handler gets are `arguments`.
  template <class Listener, class Result, class... Parameter, class... Argument>
  int raise(ShellNotification notification, Result (Listener::*handler)(Parameter...), Argument&&... arguments);

  // Destroyed from the last to the first.
  BNotifySender senders_[kShellNotifications];
  EarlierStarts earlierStarts_;
  ProgramIni ini_;
  Ref<IBSettings> settings_;
  Ref<KPluginManager> pluginManager_;
  Ref<KActionManager> actionManager_;
  Ref<IBSmartObject> held_[kHeldSlots];
  bool isBeingMade_[kHeldSlots] = {};
  TaskQueue tasks_;
  std::atomic<i32> nextProgressId_{1};
  const DWORD thread_ = GetCurrentThreadId();
  bool isStarted_ = false;
  bool isShutDown_ = false;
  bool isGoing_ = false;  // nobody is made any more
};

}  // namespace corvix
