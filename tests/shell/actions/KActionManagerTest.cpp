#include "core/baselib/system/Exception.h"
#include "shell/Actions.h"
#include "tests/support/OwnPlugin.h"

#include <gtest/gtest.h>

namespace corvix {

namespace {

using testing_support::Descriptor;
using testing_support::journal;
using testing_support::OwnObject;
using testing_support::shell;

IPluginManager& manager() { return *shell().pluginManager(); }

class Declared final : public BSmartObject, public IAction {
  CORVIX_IDENTITY(Declared, 0x82500EB2, 0x63D2065A, 0xA93C1D61, 0x5DA8E3CD, BSmartObject, IAction)
 public:
  static constexpr int kThrows = 1000;
  explicit Declared(int answer = notify::kTaken) : answer_(answer) {}
  const wchar_t* name() const noexcept override { return L"Actions.Test.Declared"; }
  int validate(IActionSender*) override { return note("can "); }
  int process(IActionSender*) override { return note("does "); }

 private:
  int note(const char* what) {
    journal() += what;
    static SException error(L"x.cpp", 1, L"not freed");
    if (answer_ == kThrows) throw &error;
    return answer_;
  }
  int answer_;
};

class Handler final : public IActionTarget, public IActionListener {
  CORVIX_IDENTITY(Handler, 0x329257DC, 0xBC6F2BA3, 0x8381594C, 0x16AEE922, IActionTarget, IActionListener)
 public:
  int before = 0, during = 0;
  int onValidateAction(IAction&, IActionSender*) override { return note("on ", during); }
  int onProcessAction(IAction&, IActionSender*) override { return note("on ", during); }
  int preValidateAction(IAction&, IActionSender*) override { return note("pre ", before); }
  int postValidateAction(IAction&, IActionSender*) override { return note("post ", notify::kStop); }
  int preProcessAction(IAction&, IActionSender*) override { return note("pre ", before); }
  int postProcessAction(IAction&, IActionSender*) override { return note("post ", notify::kStop); }

 private:
  static int note(const char* what, int answer) {
    journal() += what;
    return answer;
  }
};

TEST(Actions, GoThroughHandlersThenTheActionThenTheRest) {
  Handler handler;
  using N = ShellNotification;
  const auto all = [&](auto call) {
    for (N n : {N::ValidateAction, N::ProcessAction})
      call(shellNotifications(n), static_cast<IActionTarget*>(&handler));
    for (N n : {N::PreValidateAction, N::PreProcessAction})
      call(shell().sender(n), static_cast<IActionListener*>(&handler));
    for (N n : {N::PostValidateAction, N::PostProcessAction})
      call(shellNotifications(n), static_cast<IActionListener*>(&handler));
  };
  all([](BNotifySender& list, IBTransportable* listener) { list.addListener(listener); });

  Descriptor().interface_(L"Actions.Test.Declared").registerIn(manager());
  const auto actions = createObject<IActionManager>(manager(), L"IActionManager.Instance");
  ASSERT_EQ(actions.get(), shell().actionManager());
  const struct {
    int before, during, action, result;
    const char* validated;
    const char* processed;
  } rows[] = {{0, 0, 2, 2, "pre on can post ", "pre on does post "},
              {0, 0, 1, 1, "pre on can post ", "pre on does post "},
              {1, 2, 2, 1, "pre ", "pre "},
              {2, 1, 1, 2, "pre post ", "pre post "},
              {0, 2, 1, 2, "pre on post ", "pre on post "},
              {0, 1, 2, 1, "pre on post ", "pre on post "},
              {0, 0, Declared::kThrows, 0, "pre on can post ", "pre on does post "}};
  for (const auto& row : rows) {
    if (&row != rows) actions->addAction(make<Declared>(row.action).get());  // the first comes from the descriptor
    handler.before = row.before;
    handler.during = row.during;
    journal().clear();
    EXPECT_EQ(actions->validateAction(L"Test.Declared", nullptr), row.result);
    EXPECT_EQ(journal(), row.validated);
    journal().clear();
    EXPECT_EQ(actions->processAction(L"Actions.Test.Declared", nullptr), row.result);
    EXPECT_EQ(journal(), row.processed);
  }
  journal().clear();
  EXPECT_EQ(actions->processAction(L"Nobody", nullptr), notify::kGoOn);
  EXPECT_EQ(journal(), "");
  actions->removeAction(L"Test.Declared");
  EXPECT_NE(actions->findAction(L"Test.Declared"), nullptr) << "made anew from the descriptor";
  all([](BNotifySender& list, IBTransportable* listener) { list.removeListener(listener); });
}

const OwnObject ownObject{L"Actions.Test.Declared", create<Declared>};

}  // namespace

}  // namespace corvix
