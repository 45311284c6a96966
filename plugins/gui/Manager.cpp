#include "plugins/gui/Manager.h"

#include "plugins/gui/Files.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/gui/MsgTarget.h"
#include "shell/menus/MenuManager.h"
#include "shell/services/Report.h"

#include <algorithm>
#include <string_view>

#include <commctrl.h>

namespace corvix::gui {

namespace {

Manager* manager = nullptr;

constexpr UINT_PTR kTargets = 0x43565854;
constexpr wchar_t kTargetsProperty[] = L"CorvixMessageTargets";

// Targets of a window, the last one added first. They go with the window, whose subclass they are.
struct Targets {
  std::vector<IMsgTarget*> all;
  int depth = 0;  // of the messages that they are in
  bool isGone = false;
};

LRESULT CALLBACK targetsProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT_PTR, DWORD_PTR data) {
  auto* const targets = reinterpret_cast<Targets*>(data);
  if (message == WM_NCDESTROY) {
    RemoveWindowSubclass(window, &targetsProcedure, kTargets);
    RemovePropW(window, kTargetsProperty);
    targets->isGone = true;
    if (targets->depth == 0) delete targets;
    return DefSubclassProc(window, message, wparam, lparam);
  }
  ++targets->depth;
  bool isTaken = false;
  std::intptr_t result = 0;
  for (std::size_t i = targets->all.size(); i-- > 0 && !isTaken;) {
    if (i >= targets->all.size()) continue;  // somebody was taken out
    IMsgTarget* const target = targets->all[i];
    const bool isWell = callGuarded(codeOf(target), L"a message target",
                                    [&] { isTaken = target->onMessage(message, wparam, lparam, result); });
    if (!isWell) {
      isTaken = false;
      std::erase(targets->all, target);
    }
  }
  --targets->depth;
  if (targets->isGone) {
    if (targets->depth == 0) delete targets;
    return static_cast<LRESULT>(result);
  }
  return isTaken ? static_cast<LRESULT>(result) : DefSubclassProc(window, message, wparam, lparam);
}

// MinGW-w64 knows no GetWindowSubclass for 64 bits.
Targets* targetsOf(HWND window) { return static_cast<Targets*>(GetPropW(window, kTargetsProperty)); }

bool isInput(UINT message) {
  return (message >= WM_KEYFIRST && message <= WM_KEYLAST) || message == WM_LBUTTONUP || message == WM_RBUTTONUP ||
         message == WM_COMMAND;
}

}  // namespace

Manager* Manager::current() noexcept { return manager; }

Manager::Manager() : report_(Ref<IBSmartObject>::adopt(createReport())) {
  const INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TAB_CLASSES | ICC_BAR_CLASSES | ICC_PROGRESS_CLASS |
                                                              ICC_LISTVIEW_CLASSES | ICC_TREEVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  manager = this;
  listen(true);
}

Manager::~Manager() {
  frames_.clear();
  if (IShell::getInstance()) listen(false);
  manager = nullptr;
}

// On the shell's own lists: what the program's windows do is done before others hear of it.
void Manager::listen(bool begin) {
  IShell& shell = *IShell::getInstance();
  const auto change = [&](BNotifySender& sender, IBTransportable* listener) {
    if (begin) {
      sender.addListener(listener);
    } else {
      sender.removeListener(listener);
    }
  };
  change(shell.sender(ShellNotification::UnInitialize), static_cast<IShellListener*>(this));
  change(shell.sender(ShellNotification::ChangeStatusText), static_cast<IStatusListener*>(this));
  for (const ShellNotification one : {ShellNotification::StartProgress, ShellNotification::ChangeProgress,
                                      ShellNotification::UpdateProgress, ShellNotification::StopProgress})
    change(shell.sender(one), static_cast<IProgressCallback*>(this));
  for (const ShellNotification one : {ShellNotification::ValidateAction, ShellNotification::ProcessAction})
    change(shell.sender(one), static_cast<IActionTarget*>(this));
  for (const ShellNotification one : {ShellNotification::SysMsgBox, ShellNotification::ShowConfirmation})
    change(shell.sender(one), static_cast<IDialogListener*>(this));
  change(shell.pluginManager()->postEventSender(), static_cast<IGlobalEventTarget*>(this));
  if (const auto translator = createObject<IBTranslator>(*shell.pluginManager(), L"IBTranslator.Instance"))
    change(translator->sender(), static_cast<ILanguageListener*>(this));
}

IBReport* Manager::report() noexcept { return corvix::query<IBReport>(report_.get()); }

IFrameWindow* Manager::createFrame(const wchar_t* name) {
  auto frame = make<Frame>(*this, name);
  if (!frame->make()) {
    report()->addLine(windows::translated(L"No window could be made. Is there a display?"));
    return nullptr;
  }
  frames_.push_back(frame);
  if (IDocManager* const documents = IShell::getInstance()->docManager(); documents && frames_.size() == 1) {
    for (i32 i = 0; i < documents->documentCount(); ++i) frame->openView(documents->documentAt(i));
  }
  return frame.get();
}

Frame* Manager::activeFrame() const noexcept {
  const HWND active = GetActiveWindow();
  for (const Ref<Frame>& frame : frames_) {
    if (frame->window() == active) return frame.get();
  }
  return mainFrame();
}

void Manager::forget(const Frame& frame) {
  std::erase_if(frames_, [&](const Ref<Frame>& one) { return one.get() == &frame; });
  if (frames_.empty() && isRunning_) PostQuitMessage(0);
}

IBSmartObject* Manager::menu(const wchar_t* name) {
  const auto menus = createObject<IMenuManager>(*IShell::getInstance()->pluginManager(), L"IMenuManager.Instance");
  return menus ? menus->menu(name) : nullptr;
}

// The message loop.

i32 Manager::run() {
  const bool wasRunning = std::exchange(isRunning_, true);
  MSG message = {};
  for (;;) {
    if (isStale_ && !PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE)) refresh();
    const BOOL has = GetMessageW(&message, nullptr, 0, 0);
    if (has <= 0) break;
    if (isInput(message.message)) isStale_ = true;
    if (translate(message)) continue;
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  isRunning_ = wasRunning;
  return static_cast<i32>(message.wParam);
}

bool Manager::translate(const MSG& message) {
  const std::vector<Ref<Frame>> frames = frames_;  // a key may close one
  return std::any_of(frames.begin(), frames.end(), [&](const Ref<Frame>& frame) { return frame->takeKey(message); });
}

void Manager::quit(i32 code) { PostQuitMessage(code); }

void Manager::refreshActions() {
  isStale_ = true;
  if (Frame* const frame = mainFrame()) PostMessageW(frame->window(), WM_NULL, 0, 0);  // so that the loop comes by
}

void Manager::refresh() {
  isStale_ = false;
  const std::vector<Ref<Frame>> frames = frames_;
  for (const Ref<Frame>& frame : frames) windows::guarded(L"refresh", [&] { frame->refresh(); });
}

bool Manager::addMessageTarget(void* window, IMsgTarget* target) {
  const auto handle = static_cast<HWND>(window);
  if (!target || GetWindowThreadProcessId(handle, nullptr) != thread_) return false;
  Targets* targets = targetsOf(handle);
  if (!targets) {
    auto made = std::make_unique<Targets>();
    if (!SetPropW(handle, kTargetsProperty, made.get())) return false;
    if (!SetWindowSubclass(handle, &targetsProcedure, kTargets, reinterpret_cast<DWORD_PTR>(made.get()))) {
      RemovePropW(handle, kTargetsProperty);
      return false;
    }
    targets = made.release();
  }
  if (std::find(targets->all.begin(), targets->all.end(), target) != targets->all.end()) return false;
  targets->all.push_back(target);
  return true;
}

bool Manager::removeMessageTarget(void* window, IMsgTarget* target) {
  Targets* const targets = targetsOf(static_cast<HWND>(window));
  if (!targets || std::erase(targets->all, target) == 0) return false;
  if (targets->all.empty() && targets->depth == 0) {
    RemoveWindowSubclass(static_cast<HWND>(window), &targetsProcedure, kTargets);
    RemovePropW(static_cast<HWND>(window), kTargetsProperty);
    delete targets;
  }
  return true;
}

// What the program tells.

int Manager::onUnInitialize(IShell&) {
  const std::vector<Ref<Frame>> frames = std::move(frames_);
  frames_.clear();
  for (const Ref<Frame>& frame : frames) DestroyWindow(frame->window());
  return notify::kGoOn;
}

int Manager::onChangeStatusText(i32 pane, const wchar_t* text) {
  if (GetCurrentThreadId() == thread_) {
    for (const Ref<Frame>& frame : frames_) frame->statusBar().setText(pane, text);
    return notify::kGoOn;
  }
  struct Late {
    i32 pane;
    std::wstring text;
  };
  auto late = std::make_unique<Late>(Late{pane, windows::orEmpty(text)});
  const auto tell = [](void* argument) {
    const std::unique_ptr<Late> told(static_cast<Late*>(argument));
    if (manager) manager->onChangeStatusText(told->pane, told->text.c_str());
  };
  if (IShell::getInstance()->runOnShellThread(tell, late.get())) static_cast<void>(late.release());  // `tell` owns it
  return notify::kGoOn;
}

int Manager::onStartProgress(const Progress& progress) {
  if (Frame* const frame = mainFrame(); frame && GetCurrentThreadId() == thread_) frame->statusBar().start(progress);
  return notify::kGoOn;
}

int Manager::onChangeProgress(const Progress& progress) {
  Frame* const frame = mainFrame();
  return frame && GetCurrentThreadId() == thread_ ? frame->statusBar().change(progress) : notify::kGoOn;
}

int Manager::onUpdateProgress(const Progress& progress) { return onChangeProgress(progress); }

int Manager::onStopProgress(const Progress& progress) {
  if (Frame* const frame = mainFrame(); frame && GetCurrentThreadId() == thread_) frame->statusBar().stop(progress);
  return notify::kGoOn;
}

int Manager::onValidateAction(IAction& action, IActionSender* sender) {
  Frame* const frame = activeFrame();
  return frame ? frame->route([&](IActionTarget& target) { return target.onValidateAction(action, sender); })
               : notify::kGoOn;
}

int Manager::onProcessAction(IAction& action, IActionSender* sender) {
  refreshActions();
  Frame* const frame = activeFrame();
  return frame ? frame->route([&](IActionTarget& target) { return target.onProcessAction(action, sender); })
               : notify::kGoOn;
}

// In front of the window that the user is in, which waits for the answer.
int Manager::onSysMsgBox(MessageBoxRequest& request) {
  Frame* const frame = activeFrame();
  if (IShell::getInstance()->isUnattended() || !frame || GetCurrentThreadId() != thread_) return notify::kGoOn;
  request.answer = MessageBoxW(GetLastActivePopup(frame->window()), request.text, request.caption, request.style);
  return notify::kTaken;
}

int Manager::onShowConfirmation(ConfirmationRequest& request) {
  if (IShell::getInstance()->isUnattended() || !activeFrame()) return notify::kGoOn;
  MessageBoxRequest box{request.text, request.caption, MB_YESNO | MB_ICONQUESTION, IDNO};
  if (onSysMsgBox(box) != notify::kTaken) return notify::kGoOn;
  request.isConfirmed = box.answer == IDYES;
  return notify::kTaken;
}

int Manager::onLanguageChanged(IBTranslator&) {
  for (const Ref<Frame>& frame : std::vector<Ref<Frame>>(frames_)) frame->changeLanguage();
  return notify::kGoOn;
}

int Manager::onGlobalEvent(IGlobalEvent& event) {
  constexpr std::wstring_view kPrefix = L"Document.";
  const std::wstring_view name = event.name();
  auto* const about = corvix::query<IDocumentEvent>(&event);
  if (name.substr(0, kPrefix.size()) != kPrefix || !about) return notify::kGoOn;
  IDocument* const document = about->document();
  if (name == L"Document.Closing") {
    for (const Ref<Frame>& frame : std::vector<Ref<Frame>>(frames_)) frame->closeViewsOf(document);
  } else if (Frame* const frame = activeFrame(); frame && document) {
    if (name == L"Document.Opened" || name == L"Document.Activated") frame->openView(document);
  }
  refreshActions();
  return notify::kGoOn;
}

}  // namespace corvix::gui
