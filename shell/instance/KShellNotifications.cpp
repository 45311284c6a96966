// The operations of the shell that raise its notifications.
#include "core/baselib/system/Log.h"
#include "shell/DeclaredObjects_p.h"
#include "shell/gui/Dialog.h"
#include "shell/instance/KShell_p.h"

namespace corvix {

using Notification = ShellNotification;

template <class Listener, class Call>
int KShell::deliver(ShellNotification notification, Call tell) {
  const int own = broadcastTo<Listener>(sender(notification), tell);
  const int everybody = broadcastTo<Listener>(shellNotifications(notification), tell);
  if (own == notify::kStop || everybody == notify::kStop) return notify::kStop;
  return own == notify::kTaken ? own : everybody;
}

template <class Listener, class Result, class... Parameter, class... Argument>
int KShell::raise(ShellNotification notification, Result (Listener::*handler)(Parameter...), Argument&&... arguments) {
  if (!sender(notification).hasListeners() && !shellNotifications(notification).hasListeners()) return notify::kGoOn;
  return deliver<Listener>(notification, [&](Listener& listener) { return (listener.*handler)(arguments...); });
}

int KShell::initialize() {
  return deliver<IShellListener>(Notification::Initialize, [&](IShellListener& listener) {
    const StartMark mark = pluginManager_->startMarkOf(codeOf(&listener));
    return listener.onInitialize(*this);
  });
}

int KShell::unInitialize() { return raise(Notification::UnInitialize, &IShellListener::onUnInitialize, *this); }

int KShell::sysMsgBox(MessageBoxRequest& request) {
  return raise(Notification::SysMsgBox, &IDialogListener::onSysMsgBox, request);
}

int KShell::showCustomDialog(CustomDialogRequest& request) {
  const int told = raise(Notification::ShowCustomDialog, &IDialogListener::onShowCustomDialog, request);
  return told == notify::kGoOn ? askDialogs(request) : told;
}

int KShell::askDialogs(CustomDialogRequest& request) {
  constexpr std::wstring_view kPrefix = L"Dialog.";
  std::wstring name(request.interfaceName ? request.interfaceName : L"");
  if (name.compare(0, kPrefix.size(), kPrefix) != 0) name.insert(0, kPrefix);
  if (isUnattended()) {
    sWriteLog(L"%s is not shown: the program runs unattended.\n", name.c_str());
    return notify::kGoOn;
  }
  int result = notify::kGoOn;
  forEachDeclared<IDialog>(*pluginManager_, name.c_str(), [&](IDialog& dialog, IPluginInterface&) {
    const int answer = dialog.show(request);
    if (answer == notify::kStop || answer == notify::kTaken) result = answer;
    return result == notify::kGoOn;
  });
  return result;
}

int KShell::showConfirmation(ConfirmationRequest& request) {
  return raise(Notification::ShowConfirmation, &IDialogListener::onShowConfirmation, request);
}

int KShell::changeStatusText(i32 pane, const wchar_t* text) {
  return raise(Notification::ChangeStatusText, &IStatusListener::onChangeStatusText, pane, text);
}

int KShell::validateAction(IAction& action, IActionSender* actionSender) {
  return raise(Notification::ValidateAction, &IActionTarget::onValidateAction, action, actionSender);
}

int KShell::processAction(IAction& action, IActionSender* actionSender) {
  return raise(Notification::ProcessAction, &IActionTarget::onProcessAction, action, actionSender);
}

int KShell::startProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) {
  return raise(Notification::StartProgress, &IProgressCallback::onStartProgress,
               Progress{id, minimum, maximum, position, flags});
}

int KShell::changeProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) {
  return raise(Notification::ChangeProgress, &IProgressCallback::onChangeProgress,
               Progress{id, minimum, maximum, position, flags});
}

int KShell::updateProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) {
  return raise(Notification::UpdateProgress, &IProgressCallback::onUpdateProgress,
               Progress{id, minimum, maximum, position, flags});
}

int KShell::stopProgress(i32 id, i32 minimum, i32 maximum, i32 position, i32 flags) {
  return raise(Notification::StopProgress, &IProgressCallback::onStopProgress,
               Progress{id, minimum, maximum, position, flags});
}

// Only the shell's thread may raise progress: waits of other threads are not shown.
i32 KShell::startWait() {
  if (GetCurrentThreadId() != thread_) return 0;
  const i32 id = newProgressId();
  startProgress(id, 0, 0, 0, kProgressCanStop);
  return id;
}

bool KShell::goOnWaiting(i32 progress) {
  return progress == 0 || changeProgress(progress, 0, 0, 0, kProgressCanStop) != notify::kStop;
}

void KShell::endWait(i32 progress) {
  if (progress != 0) stopProgress(progress, 0, 0, 0, kProgressCanStop);
}

int KShell::preValidateAction(IAction& action, IActionSender* actionSender) {
  return raise(Notification::PreValidateAction, &IActionListener::preValidateAction, action, actionSender);
}

int KShell::postValidateAction(IAction& action, IActionSender* actionSender) {
  return raise(Notification::PostValidateAction, &IActionListener::postValidateAction, action, actionSender);
}

int KShell::preProcessAction(IAction& action, IActionSender* actionSender) {
  return raise(Notification::PreProcessAction, &IActionListener::preProcessAction, action, actionSender);
}

int KShell::postProcessAction(IAction& action, IActionSender* actionSender) {
  return raise(Notification::PostProcessAction, &IActionListener::postProcessAction, action, actionSender);
}

int KShell::openDocument(IDocument* document, const wchar_t* location) {
  return raise(Notification::OpenDocument, &IDocumentListener::onOpenDocument, document, location);
}

}  // namespace corvix
