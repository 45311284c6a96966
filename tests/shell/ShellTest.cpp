#include "shell/Shell.h"

#include "core/xml/XmlNode.h"
#include "shell/CommandLine.h"
#include "shell/GlobalEvent.h"
#include "shell/Plugin.h"
#include "tests/shell/OwnPlugin.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace corvix {

namespace {

using testing_world::Descriptor;
using testing_world::journal;
using testing_world::shell;

IPluginManager& manager() { return *shell().pluginManager(); }

std::string narrow(std::wstring_view text) { return {text.begin(), text.end()}; }

// Takes options that begin with its letter and as many arguments as the digit behind it says.
class Processor final : public BSmartObject, public ICommandLine {
  CORVIX_IDENTITY(Processor, 0x93750C02, 0xB580CD92, 0xAAAC9DF1, 0xBB086A32, BSmartObject, ICommandLine)

 public:
  explicit Processor(wchar_t letter) : letter_(letter) {}
  i32 takeArguments(const wchar_t* const* arguments, i32 count) override {
    journal() += narrow({&letter_, 1}) + "?" + narrow(arguments[0]) + "/" + std::to_string(count) + " ";
    return arguments[0][0] == letter_ ? arguments[0][1] - L'0' : 0;
  }

 private:
  wchar_t letter_;
};

template <char letter>
IBSmartObject* makeProcessor() {
  return new Processor(letter);
}

i32 targetsMade = 0;

// A target notes which of them it is: they are made one after the other.
class Target final : public BSmartObject, public IGlobalEventTarget {
  CORVIX_IDENTITY(Target, 0x674AB60E, 0xD4AB8164, 0x3698A1A7, 0x5251373C, BSmartObject, IGlobalEventTarget)

 public:
  int onGlobalEvent(IGlobalEvent& event) override {
    journal() += "target" + std::to_string(++targetsMade) + narrow(event.name()) + " ";
    if (targetsMade == 3) throw std::runtime_error("no time for events");  // the others are told nevertheless
    return notify::kStop;                                                  // of no consequence
  }
};

class NoTarget final : public BSmartObject {
  CORVIX_IDENTITY(NoTarget, 0x4A887A0A, 0xC4EB0423, 0xA882D117, 0xC9FE7A7A, BSmartObject)
 public:
  NoTarget() { journal() += "made "; }
  ~NoTarget() override { journal() += "gone "; }
};

class Goodbye final : public BSmartObject, public IPluginManagerBeforeDestroy {
  CORVIX_IDENTITY(Goodbye, 0x45095D2C, 0x0668E2E6, 0xD555FF0E, 0xFA0E93B6, BSmartObject, IPluginManagerBeforeDestroy)
 public:
  void beforeDestroy(IPluginManager& told) override { journal() += told.moduleCount() ? "goodbye " : "alone "; }
};

class Declared final : public BSmartObject, public IAction {
  CORVIX_IDENTITY(Declared, 0x82500EB2, 0x63D2065A, 0xA93C1D61, 0x5DA8E3CD, BSmartObject, IAction)
 public:
  explicit Declared(int answer = notify::kTaken) : answer_(answer) {}
  const wchar_t* name() const noexcept override { return L"Actions.Test.Declared"; }
  int validate(IActionSender*) override { return note("can "); }
  int process(IActionSender*) override { return note("does "); }

 private:
  int note(const char* what) {
    journal() += what;
    return answer_;
  }
  int answer_;
};

class Event final : public IGlobalEvent {
  CORVIX_IDENTITY(Event, 0xEC8B08C1, 0xB4B2518F, 0xDB391F53, 0xAFE9A65F, IGlobalEvent)
 public:
  explicit Event(const wchar_t* name) : name_(name) {}
  const wchar_t* name() const noexcept override { return name_; }

 private:
  const wchar_t* name_;
};

class EventListener final : public IGlobalEventTarget {
  CORVIX_IDENTITY(EventListener, 0x4CA6D9DE, 0x480B8FB4, 0xA1EC6A87, 0x2B43780D, IGlobalEventTarget)
 public:
  explicit EventListener(const char* name) : name_(name) {}
  int onGlobalEvent(IGlobalEvent&) override {
    journal() += name_ + std::string(" ");
    return notify::kStop;
  }

 private:
  const char* name_;
};

class LifeListener final : public IShellListener {
  CORVIX_IDENTITY(LifeListener, 0x2DF0C23C, 0xBCFBBC4C, 0xFE622B29, 0x49B37107, IShellListener)
 public:
  int onInitialize(IShell& started) override {
    journal() += "init:" + std::to_string(started.pluginManager()->moduleCount() > 1) +
                 std::to_string(started.settings()->groupCount() >= 4) +
                 std::to_string(IShell::getInstance() == &started) + " ";
    return notify::kGoOn;
  }
  int onUnInitialize(IShell&) override {
    journal() += "uninit ";
    if (printsTheEnd) std::fprintf(stderr, "the shell ended\n");
    return notify::kGoOn;
  }
  bool printsTheEnd = false;
};

// Each has a process of its own: there is one shell, and it ends for good.
void startAndShutDown() {
  LifeListener listener;
  IShell::startUnattended();
  shellNotifications(ShellNotification::Initialize).addListener(&listener);
  shellNotifications(ShellNotification::UnInitialize).addListener(&listener);
  IShell::getInstance();
  IShell::getInstance();
  journal() += "- ";
  Descriptor().interface_(L"IPluginManagerBeforeDestroy").registerIn(manager());
  shell().runOnShellThread([](void*) { journal() += "task "; }, nullptr);
  shell().shutDown();
  shell().shutDown();
  journal() += shell().runOnShellThread([](void*) {}, nullptr) ? "takes tasks" : "takes none";
  shellNotifications(ShellNotification::UnInitialize).removeListener(&listener);
  std::fprintf(stderr, "[%s]", journal().c_str());
  std::exit(0);
}

TEST(ShellDeathTest, StartsWithEverythingKnownAndShutsDownOnce) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(startAndShutDown(), testing::ExitedWithCode(0), "\\[init:111 - task uninit goodbye takes none\\]");
}

TEST(ShellDeathTest, AProgramThatJustEndsStillHasItsListenersTold) {
  const auto program = [] {
    static LifeListener listener;
    listener.printsTheEnd = true;
    shell().sender(ShellNotification::UnInitialize).addListener(&listener);
    std::exit(0);
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(program(), testing::ExitedWithCode(0), "the shell ended");
}

TEST(Shell, TasksOfAnyThreadComeInOrderThroughTheMessageLoop) {
  static std::vector<int> done;
  static DWORD doneOn = 0;
  const auto task = [](void* number) {
    done.push_back(static_cast<int>(reinterpret_cast<std::intptr_t>(number)));
    doneOn = GetCurrentThreadId();
    if (done.back() == 1) throw 1;  // dropped
    if (done.back() == 2) shell().runOnShellThread([](void*) { done.push_back(1000); }, nullptr);
  };
  shell();
  std::thread([&] {
    for (std::intptr_t i = 0; i < 100; ++i) shell().runOnShellThread(task, reinterpret_cast<void*>(i));
  }).join();
  EXPECT_TRUE(done.empty());
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  ASSERT_EQ(done.size(), 101u);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(done[static_cast<std::size_t>(i)], i);
  EXPECT_EQ(done[100], 1000);
  EXPECT_EQ(doneOn, GetCurrentThreadId());
}

TEST(Shell, BindsItsOwnSettings) {
  const struct {
    const wchar_t* group;
    const wchar_t* item;
    Variant expected;
  } rows[] = {{L"General", L"WebIntegrate", true},     {L"FontSystem", L"AASize", 3},
              {L"Interface", L"RecentFileNo", L"4"},   {L"FontSystem", L"FontTypeToSubst", L"Type1"},
              {L"Quality", L"FullColorConversion", 5}, {L"Quality", L"ImageStretchMode", 2},
              {L"Quality", L"ImageSizeLimit", L"1"},   {L"Quality", L"SmartLines", false}};
  IBSettings& settings = *shell().settings();
  for (const auto& row : rows) {
    Variant value;
    EXPECT_TRUE(settings.getValue(row.group, row.item, value));
    EXPECT_EQ(value, row.expected) << narrow(row.item);
  }
  EXPECT_EQ(settings.itemCount(L"Quality"), 6);
  settings.setValue(L"Quality", L"ImageStretchMode", 3);
  EXPECT_GE(manager().saveSettings(), 17);
  wchar_t path[MAX_PATH];
  std::wstring key(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
  std::replace(key.begin(), key.end(), L'\\', L'/');
  key = L"Software\\Marrowby\\Corvix\\" + key + L"\\Options\\Quality\\ImageStretchMode";
  wchar_t data[32];
  DWORD size = sizeof data;
  RegGetValueW(HKEY_CURRENT_USER, key.c_str(), L"Data", RRF_RT_REG_SZ, nullptr, data, &size);
  EXPECT_STREQ(data, L"Best");
}

TEST(Events, ReachListsAndTargetsInTheirOrder) {
  Descriptor descriptor;
  for (const wchar_t* order : std::initializer_list<const wchar_t*>{L"25", nullptr, L"hight", L"DEFAULT", L"0x10",
                                                                    L"Low", L"-101", L"Highest"})
    descriptor.interface_(L"GlobalEvent.Ordered", order);
  descriptor.interface_(L"GlobalEvent.Odd").registerIn(manager());
  const auto found = Ref<IBCollection>::adopt(manager().findByName(L"GlobalEvent.Ordered"));
  std::string orders;
  for (i32 i = 0; i < found->count(); ++i) {
    const wchar_t* const order = query<IPluginInterface>(found->item(i))->attribute(L"Order");
    orders += narrow(order ? order : L"none") + " ";
  }
  EXPECT_EQ(orders, "-101 hight Low none DEFAULT Highest 0x10 25 ");

  EventListener before("before"), everybodyBefore("all-before"), after("after"), everybodyAfter("all-after");
  const auto listOf = [](const char* name) {
    return static_cast<BNotifySender*>(BGlobalData::getItem(IPluginManager::classInfo(), name));
  };
  Event nobodys(L"Nobodys"), ordered(L"Ordered"), odd(L"Odd");
  manager().raiseEvent(nobodys);  // makes the lists
  const std::pair<BNotifySender*, EventListener*> lists[] = {{&manager().preEventSender(), &before},
                                                             {&manager().postEventSender(), &after},
                                                             {listOf("preGlobalEvent"), &everybodyBefore},
                                                             {listOf("postGlobalEvent"), &everybodyAfter}};
  for (const auto& [list, listener] : lists) list->addListener(listener);
  const auto raised = [](Event& event) {
    journal().clear();
    manager().raiseEvent(event);
    return journal();
  };
  EXPECT_EQ(raised(nobodys), "before all-before after all-after ");
  EXPECT_EQ(raised(odd), "before all-before made gone after all-after ");
  for (const auto& [list, listener] : lists) list->removeListener(listener);
  targetsMade = 0;
  EXPECT_EQ(raised(ordered),
            "target1Ordered target2Ordered target3Ordered target4Ordered target5Ordered target6Ordered target7Ordered "
            "target8Ordered ");
}

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
              {0, 1, 2, 1, "pre on post ", "pre on post "}};
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

TEST(CommandLine, GoesArgumentByArgumentThroughTheProcessors) {
  const wchar_t* const arguments[] = {L"a2", L"x", L"b1", L"zzz", L"b9"};
  EXPECT_EQ(shell().processCommandLine(arguments, 0), 0);
  Descriptor().interface_(L"CommandLine.Processors").registerIn(manager());
  journal().clear();
  EXPECT_EQ(shell().processCommandLine(arguments, 3), 1);  // nobody took "b1"
  EXPECT_EQ(journal(), "a?a2/3 a?b1/1 ");
}

}  // namespace

}  // namespace corvix

CORVIX_PLUGIN({L"CommandLine.Processors", corvix::makeProcessor<'a'>},
              {L"GlobalEvent.Ordered", corvix::create<corvix::Target>},
              {L"GlobalEvent.Odd", corvix::create<corvix::NoTarget>},
              {L"IPluginManagerBeforeDestroy", corvix::create<corvix::Goodbye>},
              {L"Actions.Test.Declared", corvix::create<corvix::Declared>})
