#include "shell/Shell.h"

#include "core/xml/XmlNode.h"
#include "graphics/fonts/FontMachine.h"
#include "shell/CommandLine.h"
#include "shell/Locations.h"
#include "shell/documents/DocManager.h"
#include "shell/gui/Dialog.h"
#include "shell/gui/GUIManager.h"
#include "shell/history/StateHistory.h"
#include "tests/support/OwnPlugin.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace corvix {

namespace {

using testing_support::Descriptor;
using testing_support::journal;
using testing_support::narrow;
using testing_support::OwnObject;
using testing_support::shell;

IPluginManager& manager() { return *shell().pluginManager(); }

// Takes options that begin with its letter and as many arguments as the digit behind it says.
class Processor final : public BSmartObject, public ICommandLine {
  CORVIX_IDENTITY(Processor, 0x93750C02, 0xB580CD92, 0xAAAC9DF1, 0xBB086A32, BSmartObject, ICommandLine)

 public:
  explicit Processor(wchar_t letter) : letter_(letter) {}
  i32 takeArguments(const wchar_t* const* arguments, i32 count) override {
    journal() += narrow({&letter_, 1}) + "?" + narrow(arguments[0]) + "/" + std::to_string(count) + " ";
    if (arguments[0] == std::wstring_view(L"throw")) throw std::runtime_error("no such option");
    return arguments[0][0] == letter_ ? arguments[0][1] - L'0' : 0;
  }

 private:
  wchar_t letter_;
};

std::string processorLetters = "a";  // of those that are made, in turn
std::size_t processorsMade = 0;

IBSmartObject* makeProcessor() {
  const char letter = processorLetters[processorsMade++ % processorLetters.size()];
  return new Processor(static_cast<wchar_t>(letter));
}

class Goodbye final : public BSmartObject, public IPluginManagerBeforeDestroy {
  CORVIX_IDENTITY(Goodbye, 0x45095D2C, 0x0668E2E6, 0xD555FF0E, 0xFA0E93B6, BSmartObject, IPluginManagerBeforeDestroy)
 public:
  void beforeDestroy(IPluginManager& told) override { journal() += told.moduleCount() ? "goodbye " : "alone "; }
};

// What a plug-in may declare as the action manager.
class OwnManager final : public IActionManager {
  CORVIX_IDENTITY(OwnManager, 0x1E9D3B57, 0x8AC24F60, 0xF5138DE9, 0x27B6C04A, IActionManager)
 public:
  OwnManager() { journal() += shell().actionManager() ? "somebody " : "nobody "; }
  void addAction(IAction*) override {}
  void removeAction(const wchar_t*) override {}
  IAction* findAction(const wchar_t*) override { return nullptr; }
  int validateAction(const wchar_t*, IActionSender*) override { return 7; }
  int processAction(const wchar_t*, IActionSender*) override { return 7; }
};

// The same of the three others that the shell holds; the numbers say whose they are.
class OwnDocuments final : public BSmartObject, public IDocManager {
  CORVIX_IDENTITY(OwnDocuments, 0x0B5E93D7, 0x61F8A24C, 0xD90C7E35, 0x4A27F18B, BSmartObject, IDocManager)
 public:
  IDocument* openDocument(const wchar_t*) override { return nullptr; }
  bool closeDocument(IDocument*) override { return false; }
  i32 documentCount() const noexcept override { return 71; }
  IDocument* documentAt(i32) const noexcept override { return nullptr; }
  IDocument* newDocument(const wchar_t*) override { return nullptr; }
  bool saveDocument(IDocument*) override { return false; }
  bool saveDocumentAs(IDocument*, const wchar_t*, const wchar_t*) override { return false; }
  IDocument* activeDocument() const noexcept override { return nullptr; }
  bool setActiveDocument(IDocument*) override { return false; }
  IBCollection* dialogFilters(bool) override { return nullptr; }
  i32 recentCount() override { return 0; }
  const wchar_t* recentAt(i32) override { return nullptr; }
  void forgetRecent(const wchar_t*) override {}
  IBReport* report() noexcept override { return nullptr; }
  void setQuestions(IDocQuestions*) noexcept override {}
};

class OwnHistory final : public BSmartObject, public IStateHistory {
  CORVIX_IDENTITY(OwnHistory, 0xE3419C06, 0x27D5B8F1, 0x860AF4C2, 0x95B31D7E, BSmartObject, IStateHistory)
 public:
  bool canGoBack() const noexcept override { return true; }
  bool canGoForward() const noexcept override { return true; }
  bool goBack() override { return false; }
  bool goForward() override { return false; }
  IStateList* listOf(IDocument*) override { return nullptr; }
  void setActive(IDocument*) override {}
  void forget(IDocument*) override {}
};

class OwnWindows final : public BSmartObject, public IGUIManager {
  CORVIX_IDENTITY(OwnWindows, 0x7C08E5A9, 0xB4D12F63, 0x135E9A70, 0xC86F42DB, BSmartObject, IGUIManager)
 public:
  IFrameWindow* mainWindow() const noexcept override { return nullptr; }
  IFrameWindow* createFrame(const wchar_t*) override { return nullptr; }
  IBSmartObject* menu(const wchar_t*) override { return nullptr; }
  i32 run() override { return 0; }
  void quit(i32) override {}
  bool addMessageTarget(void*, IMsgTarget*) override { return true; }
  bool removeMessageTarget(void*, IMsgTarget*) override { return false; }
  void refreshActions() override {}
  IBReport* report() noexcept override { return nullptr; }
};

bool managerIsWrong = false;

template <class Own>
IBSmartObject* makeOwn() {
  if (managerIsWrong) return new testing_support::OfNoUse;
  return new Own;
}

// Answers as often as it is set to, each time by itself.
class Dialog final : public BSmartObject, public IDialog {
  CORVIX_IDENTITY(Dialog, 0xA2E74C19, 0x5D0B98F3, 0x3F86E1D2, 0xC4A9705B, BSmartObject, IDialog)
 public:
  static constexpr int kThrows = 1000;
  static inline std::vector<int> answers;  // the last is given first
  int show(CustomDialogRequest& request) override {
    request.answer += 10;
    const int answer = answers.back();
    answers.pop_back();
    if (answer == kThrows) throw 7;
    return answer;
  }
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
    journal() += asksForActions ? IShell::getInstance()->actionManager() ? "actions " : "no actions " : "uninit ";
    if (printsTheEnd) std::fprintf(stderr, "the shell ended %s\n", journal().c_str());
    return notify::kGoOn;
  }
  bool printsTheEnd = false, asksForActions = false;
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
    auto& listener = *new LifeListener;
    listener.printsTheEnd = true;
    shell().sender(ShellNotification::UnInitialize).addListener(&listener);
    std::exit(0);
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(program(), testing::ExitedWithCode(0), "the shell ended");
}

// In a process each: the shell keeps the first manager that it gets.
enum class Managers { WrongIdentity, AsksForItself, AtShutDown, AtTheEnd };

void askForActions(Managers which) {
  auto& listener = *new LifeListener;
  listener.asksForActions = listener.printsTheEnd = true;
  shell().sender(ShellNotification::UnInitialize).addListener(&listener);
  if (which <= Managers::AsksForItself) {
    managerIsWrong = which == Managers::WrongIdentity;
    Descriptor().interface_(L"IActionManager.Instance", L"Low").registerIn(manager());
    IActionManager* const found = shell().actionManager();
    journal() += found ? std::to_string(found->processAction(L"Nobody", nullptr)) : "none";
    journal() += found == shell().actionManager() ? " same " : " another ";
  } else if (which == Managers::AtShutDown) {
    shell().shutDown();
    journal() += shell().actionManager() ? "still" : "gone";
    std::fprintf(stderr, "%s", journal().c_str());
  }
  std::exit(0);
}

TEST(ShellDeathTest, ThereIsAnActionManagerUntilTheShellIsGone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto ended = testing::ExitedWithCode(0);
  EXPECT_EXIT(askForActions(Managers::WrongIdentity), ended, "the shell ended made gone 0 same actions");
  EXPECT_EXIT(askForActions(Managers::AsksForItself), ended, "the shell ended somebody 7 same actions");
  EXPECT_EXIT(askForActions(Managers::AtShutDown), ended, "actions still");
  EXPECT_EXIT(askForActions(Managers::AtTheEnd), ended, "the shell ended actions");
}

void askOthers(bool isWrong) {
  managerIsWrong = isWrong;
  for (const wchar_t* const name : {L"IDocManager.Instance", L"IStateHistory.GetInstance", L"IGUIManager.Instance"})
    Descriptor().interface_(name, L"Low").registerIn(manager());
  IDocManager* const documents = shell().docManager();
  IStateHistory* const history = shell().stateHistory();
  IGUIManager* const windows = shell().guiManager();
  std::fprintf(stderr, "documents %d, history %d, windows %d", documents ? documents->documentCount() : -1,
               history ? history->canGoBack() : -1, windows && windows->addMessageTarget(nullptr, nullptr));
  std::exit(0);
}

TEST(ShellDeathTest, EachManagerCanBeAPluginsOwn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(askOthers(false), testing::ExitedWithCode(0), "documents 71, history 1, windows 1");
  // What is none leaves those behind it in place.
  EXPECT_EXIT(askOthers(true), testing::ExitedWithCode(0), "documents 0, history 0, windows 0");
}

TEST(Shell, AsksDeclaredDialogsWhenNoListenerAnswers) {
  constexpr int kGoOn = notify::kGoOn, kTaken = notify::kTaken, kStop = notify::kStop, kThrows = Dialog::kThrows;
  Descriptor().interface_(L"Dialog.Test").interface_(L"Dialog.Test").registerIn(manager());
  const struct {
    const wchar_t* name;
    bool unattended;
    std::vector<int> answers;
    int result, answer;
  } rows[] = {{L"Dialog.Nobody", false, {}, kGoOn, 1},
              {L"Dialog.Test", false, {kTaken}, kTaken, 11},
              {L"Test", false, {kTaken}, kTaken, 11},
              {L"Dialog.Test", false, {kTaken, kGoOn}, kTaken, 21},
              {L"Dialog.Test", false, {kTaken, kThrows}, kTaken, 21},
              {L"Dialog.Test", false, {kStop}, kStop, 11},
              {L"Dialog.Test", false, {kGoOn, kGoOn}, kGoOn, 21},
              {L"Dialog.Test", true, {}, kGoOn, 1},
              {nullptr, false, {}, kGoOn, 1}};
  IShell& told = shell();
  for (const auto& row : rows) {
    Dialog::answers = row.answers;
    told.setUnattended(row.unattended);
    CustomDialogRequest request{row.name, nullptr, 1};
    EXPECT_EQ(told.showCustomDialog(request), row.result);
    EXPECT_EQ(request.answer, row.answer);
    EXPECT_TRUE(Dialog::answers.empty());
  }
  told.setUnattended(true);
}

TEST(Shell, HasOneFontMachine) {
  const auto first = createObject<IFMFontMachine>(manager(), L"IFMFontMachine.Instance");
  const auto second = createObject<IFMFontMachine>(manager(), L"IFMFontMachine.Instance");
  EXPECT_TRUE(first);
  EXPECT_EQ(first, second);
}

// Delivers what waits, and returns how many messages of the shell's own were among it.
int pumpMessages() {
  int own = 0;
  MSG message;
  for (; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); DispatchMessageW(&message)) own += message.message == WM_APP;
  return own;
}

TEST(Shell, TasksOfAnyThreadComeInOrderThroughTheMessageLoop) {
  static std::vector<int> done;
  static DWORD doneOn = 0;
  static std::size_t doneInside = 0;  // by the message loop of the first of them
  static int messages = 0;
  const auto task = [](void* number) {
    done.push_back(static_cast<int>(reinterpret_cast<std::intptr_t>(number)));
    doneOn = GetCurrentThreadId();
    if (done.back() == 0) {
      messages += pumpMessages();
      doneInside = done.size();
    }
    if (number == reinterpret_cast<void*>(1)) throw 1;  // dropped
    if (number == reinterpret_cast<void*>(2)) shell().runOnShellThread([](void*) { done.push_back(1000); }, nullptr);
  };
  shell();
  std::thread([&] {
    for (std::intptr_t i = 0; i < 100; ++i) shell().runOnShellThread(task, reinterpret_cast<void*>(i));
  }).join();
  EXPECT_TRUE(done.empty());
  messages += pumpMessages();
  EXPECT_LE(messages, 4);
  EXPECT_EQ(doneInside, 101u);
  ASSERT_EQ(done.size(), 101u);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(done[static_cast<std::size_t>(i)], i);
  EXPECT_EQ(done[100], 1000);
  EXPECT_EQ(doneOn, GetCurrentThreadId());
  shell().runOnShellThread([](void*) { done.clear(); }, nullptr);
  shell().runWaitingTasks();
  EXPECT_TRUE(done.empty()) << "without a message loop";
}

TEST(Shell, HasManagersOfItsOwn) {
  EXPECT_TRUE(shell().actionManager() && shell().docManager() && shell().stateHistory());
}

TEST(Shell, APluginsManagerTakesThePlaceOfTheLibrarys) {
  for (const wchar_t* const name :
       {L"IBSecretary.Instance", L"IBSelfReg.Instance", L"IBTranslator.Instance", L"IDocManager.Instance",
        L"IMenuManager.Instance", L"IStateHistory.GetInstance", L"IFMFontMachine.Instance"}) {
    const auto isLibrarys = [&] {  // by the name of its class
      return std::strchr("FK", Ref<IBSmartObject>::adopt(manager().createObject(name))->typeInfo().className()[0]);
    };
    EXPECT_TRUE(isLibrarys());
    Descriptor().interface_(name, L"Low").registerIn(manager());
    EXPECT_FALSE(isLibrarys());
  }
}

TEST(Locations, NameTheirSuppliers) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {{L"HtTp://h/x", L"Supplier.http"},
                                                            {L"c:\\x", L"Supplier.file"},
                                                            {L"a/b", L"Supplier.file"},
                                                            {L"iStream:a", L"Supplier.istream"}};
  for (const auto& [location, name] : rows) EXPECT_EQ(supplierNameOf(location).view(), name);
}

TEST(Shell, NumbersProgressesFromOneUp) {
  const i32 first = shell().newProgressId();
  EXPECT_GE(first, 1);
  EXPECT_EQ(shell().newProgressId(), first + 1);
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

TEST(CommandLine, GoesArgumentByArgumentThroughTheProcessors) {
  const wchar_t* const arguments[] = {L"a2", L"x", L"b1", L"zzz", L"b9"};
  EXPECT_EQ(shell().processCommandLine(arguments, 0), 0);
  Descriptor().interface_(L"CommandLine.Processors").registerIn(manager());
  journal().clear();
  EXPECT_EQ(shell().processCommandLine(arguments, 3), 1);  // nobody took "b1"
  EXPECT_EQ(journal(), "a?a2/3 a?b1/1 ");
  const wchar_t* const odd[] = {L"throw", L"a1"};
  EXPECT_EQ(shell().processCommandLine(odd, 2), 1);
}

TEST(CommandLine, OffersToTheFrameworksOwnProcessorsFirst) {
  const wchar_t* const arguments[] = {L"x"};
  Descriptor().interface_(L"CommandLine.Processors").registerIn(manager());
  Descriptor(L"Teldane").interface_(L"CommandLine.Processors").registerIn(manager());
  processorLetters = "abcdefgh";
  processorsMade = 0;
  journal().clear();
  EXPECT_EQ(shell().processCommandLine(arguments, 1), 1);
  EXPECT_EQ(journal().front(), processorLetters[processorsMade - 1]) << "the one declared last is the framework's";
  processorLetters = "a";
}

const OwnObject ownObjects[] = {{L"CommandLine.Processors", makeProcessor},
                                {L"IPluginManagerBeforeDestroy", create<Goodbye>},
                                {L"Dialog.Test", create<Dialog>},
                                {L"IActionManager.Instance", makeOwn<OwnManager>},
                                {L"IBSecretary.Instance", create<Dialog>},
                                {L"IBSelfReg.Instance", create<Dialog>},
                                {L"IBTranslator.Instance", create<Dialog>},
                                {L"IMenuManager.Instance", create<Dialog>},
                                {L"IDocManager.Instance", makeOwn<OwnDocuments>},
                                {L"IStateHistory.GetInstance", makeOwn<OwnHistory>},
                                {L"IGUIManager.Instance", makeOwn<OwnWindows>},
                                {L"IFMFontMachine.Instance", create<Dialog>}};

}  // namespace

}  // namespace corvix
