// Manager: the user interface of a program, as IGUIManager offers it. [shell thread]
#pragma once

#include "plugins/gui/Frame.h"
#include "shell/GlobalEvent.h"
#include "shell/Notifications.h"
#include "shell/gui/GUIManager.h"
#include "shell/language/Translator.h"

#include <memory>

namespace corvix::gui {

// What it hears of the program; a listener of its own, as it goes before those lists.
class Manager final : public BSmartObject,
                      public IGUIManager,
                      public IShellListener,
                      public IStatusListener,
                      public IProgressCallback,
                      public IActionTarget,
                      public IDialogListener,
                      public IGlobalEventTarget,
                      public ILanguageListener {
  CORVIX_IDENTITY(Manager, 0x1600E7CA, 0xD618ED5F, 0x906DA1F1, 0x7D04DD63, BSmartObject, IGUIManager, IShellListener,
                  IStatusListener, IProgressCallback, IActionTarget, IDialogListener, IGlobalEventTarget,
                  ILanguageListener)

 public:
  Manager();
  ~Manager() override;
  static Manager* current() noexcept;

  IFrameWindow* mainWindow() const noexcept override { return mainFrame(); }
  IFrameWindow* createFrame(const wchar_t* name) override;
  IBSmartObject* menu(const wchar_t* name) override;
  i32 run() override;
  void quit(i32 code) override;
  bool addMessageTarget(void* window, IMsgTarget* target) override;
  bool removeMessageTarget(void* window, IMsgTarget* target) override;
  void refreshActions() override;
  IBReport* report() noexcept override;

  Frame* mainFrame() const noexcept { return frames_.empty() ? nullptr : frames_.front().get(); }
  Frame* activeFrame() const noexcept;  // the one the user is in; else the main one
  bool isLast(const Frame& frame) const noexcept { return frames_.size() == 1 && frames_.front().get() == &frame; }
  void forget(const Frame& frame);

 private:
  int onInitialize(IShell&) override { return notify::kGoOn; }
  int onUnInitialize(IShell&) override;
  int onChangeStatusText(i32 pane, const wchar_t* text) override;
  int onStartProgress(const Progress& progress) override;
  int onChangeProgress(const Progress& progress) override;
  int onUpdateProgress(const Progress& progress) override;
  int onStopProgress(const Progress& progress) override;
  int onValidateAction(IAction& action, IActionSender* sender) override;
  int onProcessAction(IAction& action, IActionSender* sender) override;
  int onSysMsgBox(MessageBoxRequest& request) override;
  int onShowCustomDialog(CustomDialogRequest&) override { return notify::kGoOn; }
  int onShowConfirmation(ConfirmationRequest& request) override;
  int onGlobalEvent(IGlobalEvent& event) override;
  int onLanguageChanged(IBTranslator& translator) override;
  void listen(bool begin);
  bool translate(const MSG& message);
  void refresh();

  std::vector<Ref<Frame>> frames_;
  Ref<IBSmartObject> report_;
  bool isStale_ = true, isRunning_ = false;
  const DWORD thread_ = GetCurrentThreadId();
};

}  // namespace corvix::gui
