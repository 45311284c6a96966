#include "shell/Notifications.h"

#include "core/baselib/objects/GlobalData.h"
#include "tests/support/HeapBlocks.h"
#include "tests/support/OwnPlugin.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace corvix {

namespace {

using testing_support::journal;
using testing_support::shell;
using N = ShellNotification;

// Listens to everything: notes its name and what it was told.
class Ear final : public IShellListener,
                  public IDialogListener,
                  public IStatusListener,
                  public IProgressCallback,
                  public IActionTarget,
                  public IActionListener,
                  public IDocumentListener {
  CORVIX_IDENTITY(Ear, 0x5C409518, 0x6112E7AA, 0xC4DEF880, 0x0E5F3193, IShellListener, IDialogListener, IStatusListener,
                  IProgressCallback, IActionTarget, IActionListener, IDocumentListener)

 public:
  explicit Ear(std::string name) : name_(std::move(name)) {}
  static constexpr int kThrows = 1000;
  int answer = notify::kGoOn;

  int onInitialize(IShell&) override { return note("init"); }
  int onUnInitialize(IShell&) override { return note("uninit"); }
  int onSysMsgBox(MessageBoxRequest& request) override {
    request.answer = IDNO;
    return note("box", request.style);
  }
  int onShowCustomDialog(CustomDialogRequest& request) override { return note("dialog", request.answer); }
  int onShowConfirmation(ConfirmationRequest& request) override { return note("confirm", request.isConfirmed); }
  int onChangeStatusText(i32 pane, const wchar_t*) override { return note("status", pane); }
  int onStartProgress(const Progress& p) override { return note("start", sum(p)); }
  int onChangeProgress(const Progress& p) override { return note("change", sum(p)); }
  int onUpdateProgress(const Progress& p) override { return note("update", sum(p)); }
  int onStopProgress(const Progress& p) override { return note("stop", sum(p)); }
  int onValidateAction(IAction&, IActionSender*) override { return note("validate"); }
  int onProcessAction(IAction&, IActionSender*) override { return note("process"); }
  int preValidateAction(IAction&, IActionSender*) override { return note("preValidate"); }
  int postValidateAction(IAction&, IActionSender*) override { return note("postValidate"); }
  int preProcessAction(IAction&, IActionSender*) override { return note("preProcess"); }
  int postProcessAction(IAction&, IActionSender*) override { return note("postProcess"); }
  int onOpenDocument(IDocument*, const wchar_t*) override { return note("open"); }

 private:
  static i32 sum(const Progress& p) {
    return (((p.id * 10 + p.minimum) * 10 + p.maximum) * 10 + p.position) * 10 + p.flags;
  }
  int note(const char* what, i64 argument = 0) {
    journal() += name_ + what + (argument ? std::to_string(argument) : "") + " ";
    if (answer == kThrows) throw std::runtime_error("no ear for it");
    return answer;
  }
  std::string name_;
};

class NoAction final : public IAction {
  CORVIX_IDENTITY(NoAction, 0x9FB57753, 0x990B927A, 0xEF4E6862, 0x292BA0D8, IAction)
 public:
  const wchar_t* name() const noexcept override { return L"Actions.None"; }
  int validate(IActionSender*) override { return notify::kGoOn; }
  int process(IActionSender*) override { return notify::kGoOn; }
};

struct Row {
  const char* name;
  const stype_info& owner;
  const char* told;
  std::function<IBTransportable*(Ear&)> as;
  std::function<int(IShell&)> raise;
};

template <N notification>
IBTransportable* as(Ear& ear) {
  return static_cast<typename ListenerOf<notification>::Type*>(&ear);
}

NoAction action;
MessageBoxRequest box{L"", L"", 4, 0};
CustomDialogRequest dialog{L"Dialog.OpenSave", nullptr, 5};
ConfirmationRequest sure{L"", L"", true};

template <auto member>
int callAction(IShell& s) {
  return (s.*member)(action, nullptr);
}
template <auto member>
int callProgress(IShell& s) {
  return (s.*member)(1, 2, 3, 4, 5);
}

const stype_info &kShell = IShell::classInfo(), &kTarget = IActionTarget::classInfo();

// In the order of the enumeration.
const Row rows[] = {
    {"OnInitialize", kShell, "init", as<N::Initialize>, [](IShell& s) { return s.initialize(); }},
    {"OnUnInitialize", kShell, "uninit", as<N::UnInitialize>, [](IShell& s) { return s.unInitialize(); }},
    {"OnSysMsgBox", kShell, "box4", as<N::SysMsgBox>, [](IShell& s) { return s.sysMsgBox(box); }},
    {"OnShowCustomDialog", kShell, "dialog5", as<N::ShowCustomDialog>,
     [](IShell& s) { return s.showCustomDialog(dialog); }},
    {"OnShowConfirmation", kShell, "confirm1", as<N::ShowConfirmation>,
     [](IShell& s) { return s.showConfirmation(sure); }},
    {"OnChangeStatusText", kShell, "status2", as<N::ChangeStatusText>,
     [](IShell& s) { return s.changeStatusText(2, L"x"); }},
    {"OnValidateAction", kShell, "validate", as<N::ValidateAction>, callAction<&IShell::validateAction>},
    {"OnProcessAction", kShell, "process", as<N::ProcessAction>, callAction<&IShell::processAction>},
    {"onStartProgress", kShell, "start12345", as<N::StartProgress>, callProgress<&IShell::startProgress>},
    {"onChangeProgress", kShell, "change12345", as<N::ChangeProgress>, callProgress<&IShell::changeProgress>},
    {"onUpdateProgress", kShell, "update12345", as<N::UpdateProgress>, callProgress<&IShell::updateProgress>},
    {"onStopProgress", kShell, "stop12345", as<N::StopProgress>, callProgress<&IShell::stopProgress>},
    {"preValidateAction", kTarget, "preValidate", as<N::PreValidateAction>, callAction<&IShell::preValidateAction>},
    {"postValidateAction", kTarget, "postValidate", as<N::PostValidateAction>, callAction<&IShell::postValidateAction>},
    {"preProcessAction", kTarget, "preProcess", as<N::PreProcessAction>, callAction<&IShell::preProcessAction>},
    {"postProcessAction", kTarget, "postProcess", as<N::PostProcessAction>, callAction<&IShell::postProcessAction>},
    {"OnOpenDocument", kShell, "open", as<N::OpenDocument>, [](IShell& s) { return s.openDocument(nullptr, L"x"); }},
};
static_assert(std::size(rows) == kShellNotifications);

TEST(Notifications, ReachTheOwnListAndThenTheOneThatEveryModuleFinds) {
  for (u32 i = 0; i < kShellNotifications; ++i) {
    const Row& row = rows[i];
    Ear own("own ");
    Ear all("all ");
    EXPECT_EQ(row.raise(shell()), notify::kGoOn) << row.name;
    shell().sender(N{i}).addListener(row.as(own));
    // As another module would find it, with nothing but the name.
    auto* const everybody = static_cast<BNotifySender*>(BGlobalData::getItem(row.owner, row.name));
    ASSERT_EQ(everybody, &shellNotifications(N{i})) << row.name;
    everybody->addListener(row.as(all));
    const auto raised = [&](int ownAnswer, int allAnswer) {
      journal().clear();
      own.answer = ownAnswer;
      all.answer = allAnswer;
      return row.raise(shell());
    };
    const std::string both = std::string("own ") + row.told + " all " + row.told + " ";
    const struct {
      int own, all, result;
    } answers[] = {{77, 0, notify::kGoOn},
                   {notify::kTaken, 0, notify::kTaken},
                   {0, notify::kTaken, notify::kTaken},
                   {notify::kTaken, notify::kStop, notify::kStop},
                   {notify::kStop, notify::kTaken, notify::kStop},
                   {notify::kStop, 0, notify::kStop},
                   {Ear::kThrows, notify::kTaken, notify::kTaken},
                   {notify::kTaken, Ear::kThrows, notify::kTaken}};
    for (const auto& [ownAnswer, allAnswer, result] : answers) {
      EXPECT_EQ(raised(ownAnswer, allAnswer), result) << row.name << ownAnswer << allAnswer;
      EXPECT_EQ(journal(), both);
    }
    shell().sender(N{i}).removeListener(row.as(own));
    everybody->removeListener(row.as(all));
  }
}

TEST(Notifications, WithoutListenersAllocateNothing) {
  for (const Row& row : rows) row.raise(shell());  // the lists are there from now on
  const std::size_t before = testing_support::heapBlocksInUse();
  for (const Row& row : rows) row.raise(shell());
  EXPECT_EQ(testing_support::heapBlocksInUse(), before);
}

TEST(Notifications, ABoxIsAnsweredByWhoTakesItOrSilently) {
  Ear answers("");
  answers.answer = notify::kTaken;
  EXPECT_EQ(shell().messageBox(L"Sure?", L"Test", MB_YESNO, IDYES), IDYES);
  shell().sender(N::SysMsgBox).addListener(as<N::SysMsgBox>(answers));
  EXPECT_EQ(shell().messageBox(L"Sure?", L"Test", MB_YESNO, IDYES), IDNO);
  shell().sender(N::SysMsgBox).removeListener(as<N::SysMsgBox>(answers));
  EXPECT_FALSE(shell().askToRetry(0));
}

}  // namespace

}  // namespace corvix
