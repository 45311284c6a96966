// Frames as programs and their plug-ins have them: views and panels of this program, some of which fail.
#include "core/baselib/system/ApplicationKey.h"
#include "shell/Plugin.h"
#include "shell/documents/Document.h"
#include "shell/documents/PagedDocument.h"
#include "shell/gui/DocumentPanel.h"
#include "shell/gui/DocumentView.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/GUIManager.h"
#include "shell/gui/MsgTarget.h"
#include "shell/gui/PagedView.h"
#include "shell/services/Report.h"
#include "tests/graphics/GdiObjects.h"
#include "tests/support/HeapBlocks.h"
#include "tests/support/ImportTable.h"
#include "tests/support/MessageLoop.h"
#include "tests/support/OwnPlugin.h"
#include "tests/support/Resolution.h"
#include "tests/support/Soak.h"

#include <array>
#include <functional>
#include <stdexcept>

#include <commctrl.h>
#include <gtest/gtest.h>

namespace corvix {

namespace {

using namespace testing_support;

enum class Fault { None, Throws, Crashes };
enum class Where { Nowhere, SetDocument, Attach, Created, Refuses, Words, Message, Sent, Action, Detach };

constexpr UINT kDoIt = WM_APP + 77;

struct {
  Where where = Where::Nowhere;
  Fault how = Fault::None;
  int alive = 0, made = 0;
} world;

void failIf(Where here) {
  if (world.where != here) return;
  if (world.how == Fault::Throws) throw std::runtime_error("it went wrong");
  volatile int* const nowhere = nullptr;
  if (world.how == Fault::Crashes) *nowhere = 1;
}

class TestDocument final : public BSmartObject, public IDocument {
  CORVIX_IDENTITY(TestDocument, 0x37D2821E, 0x3F1B1CFE, 0x2938B8C1, 0x83134B30, BSmartObject, IDocument)

 public:
  explicit TestDocument(const wchar_t* format = L"DocFormat.Sound") noexcept : format_(format) {}
  const wchar_t* location() const noexcept override { return L"C:\\a.test"; }
  const wchar_t* title() const noexcept override { return L"a.test"; }
  bool isModified() const noexcept override { return isModified_; }
  const wchar_t* formatName() const noexcept override { return format_; }
  bool isReadOnly() const noexcept override { return false; }
  IStateList* history() override { return nullptr; }
  bool isModified_ = false;

 private:
  const wchar_t* format_;
};

// A window of its own that catches nothing, as authors write them.
template <class Base>
class TestView : public BSmartObject, public IActionTarget, public Base {
 public:
  TestView() { ++world.alive, ++world.made; }
  ~TestView() override { --world.alive; }
  void update() override {}
  bool attach(IFrameWindow*, void* parent) override {
    WNDCLASSW windows = {};
    windows.lpfnWndProc = &TestView::procedure;
    windows.lpszClassName = L"CorvixTestView";
    RegisterClassW(&windows);
    window = CreateWindowExW(0, L"CorvixTestView", L"", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, static_cast<HWND>(parent),
                             nullptr, nullptr, nullptr);
    failIf(Where::Attach);
    return world.where != Where::Refuses;
  }
  void detach() override {
    failIf(Where::Detach);
    DestroyWindow(window);
  }
  const wchar_t* contextWords() const noexcept override {
    if (world.where == Where::Words && world.how == Fault::Crashes) failIf(Where::Words);
    return words;
  }
  int onValidateAction(IAction& action, IActionSender*) override {
    return isOurs(action) ? notify::kTaken : notify::kGoOn;
  }
  int onProcessAction(IAction& action, IActionSender*) override {
    if (!isOurs(action)) return notify::kGoOn;
    journal() += Base::className();
    failIf(Where::Action);
    return notify::kTaken;
  }
  HWND window = nullptr;
  static inline const wchar_t* words = L"view.test";

 private:
  static bool isOurs(IAction& action) { return !std::wcscmp(action.name(), L"Actions.Test.Routed"); }
  static LRESULT CALLBACK procedure(HWND one, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_CREATE) failIf(Where::Created);
    if (message == kDoIt) failIf(Where::Message);
    if (message == WM_SIZE) failIf(Where::Sent);
    return DefWindowProcW(one, message, wparam, lparam);
  }
};

class OwnView final : public TestView<IDocumentView> {
  CORVIX_IDENTITY(OwnView, 0xEB8F593A, 0xCC16EE10, 0xE7E1669C, 0x2A9F7C6F, BSmartObject, IActionTarget, IDocumentView)

 public:
  IDocument* document() const noexcept override { return document_; }
  bool setDocument(IDocument* document) override {
    failIf(Where::SetDocument);
    document_ = document;
    return true;
  }

 private:
  IDocument* document_ = nullptr;
};

class OwnPanel final : public TestView<IDocumentPanel> {
  CORVIX_IDENTITY(OwnPanel, 0xB0D15FBF, 0x882F3A20, 0x8E13ED84, 0x45ED2C2E, BSmartObject, IActionTarget, IDocumentPanel)

 public:
  const wchar_t* title() const noexcept override { return L""; }
  void setDocument(IDocument*) override { failIf(Where::SetDocument); }
};

class Routed final : public BSmartObject, public IAction {
  CORVIX_IDENTITY(Routed, 0xCA67F28D, 0xA4083F8C, 0x557A6AEF, 0xC6401B4D, BSmartObject, IAction)

 public:
  const wchar_t* name() const noexcept override { return L"Actions.Test.Routed"; }
  int validate(IActionSender*) override { return notify::kStop; }
  int process(IActionSender*) override { return journal() += "itself", notify::kTaken; }
};

constexpr int kPanels = 1000;

std::wstring panelName(int number) { return L"Panel.Many" + std::to_wstring(number); }

const OwnObject kPanelObjects = [] {
  static std::vector<std::wstring> names;
  for (int i = 0; i < kPanels; ++i) names.push_back(panelName(i));
  for (const std::wstring& name : names) OwnObject{name.c_str(), create<OwnPanel>};
  return OwnObject{L"Panel.Own", create<OwnPanel>};
}();
const OwnObject kView{L"DocumentView.Own", create<OwnView>};

void declare(XMLNodeNode& plugin, AttributeRows rows) {
  const auto element = make<XMLNodeNode>(&plugin, XmlNodeType::Element, L"Interface");
  addAttributes(*element, {{L"GUID", L"1, 2, 3, 4"}});
  addAttributes(*element, rows);
  plugin.appendChild(element.get());
}

void declareOnce() {
  static const bool isDone = [] {
    const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
    const auto plugin = make<XMLNodeNode>(root.get(), XmlNodeType::Element, L"Plugin");
    root->appendChild(plugin.get());
    declare(*plugin, {{L"Name", L"DocumentView.Own"}, {L"For", L"DocFormat.Sound"}});
    declare(*plugin, {{L"Name", L"DocumentView.Nobody"}, {L"For", L"DocFormat.Strange"}});
    declare(*plugin, {{L"Name", L"Panel.Own"}, {L"Text", L"Own"}, {L"Side", L"right"}, {L"Size", L"150"}});
    for (int i = 0; i < kPanels; ++i)
      declare(*plugin, {{L"Name", panelName(i).c_str()}, {L"Text", L"Many"}, {L"When", L"many"}, {L"Shown", L"true"}});
    shell().pluginManager()->registerDescriptor(GetModuleHandleW(nullptr), root.get());
    shell().actionManager()->addAction(make<Routed>().get());
    return true;
  }();
  (void)isDone;
}

class FrameTest : public testing::Test {
 protected:
  void SetUp() override {
    declareOnce();
    world.where = Where::Nowhere;
    world.how = Fault::None;
    journal().clear();
    frame_ = gui().createFrame(L"Test");
    ASSERT_TRUE(frame_);
    frame_->show(true);
    run();
  }
  void TearDown() override {
    closeFrame();
    EXPECT_EQ(world.alive, 0);
  }

  static IGUIManager& gui() { return *shell().guiManager(); }
  static HWND windowOf(IFrameWindow* frame) { return static_cast<HWND>(frame->windowHandle()); }
  HWND window() const { return windowOf(frame_); }
  void closeFrame() {
    if (frame_) SendMessageW(window(), WM_CLOSE, 0, 0);
    frame_ = nullptr;
    run();
  }

  // The program's loop, until nothing is to be done.
  static void run() {
    ticks = 0;
    SetTimer(nullptr, 0, 15, &FrameTest::endRun);
    gui().run();
  }
  // A tick may be due before there is nothing else to be done; not three in a row, each after a look at the queue.
  static void CALLBACK endRun(HWND, UINT, UINT_PTR timer, DWORD) {
    if (HIWORD(GetQueueStatus(QS_ALLINPUT & ~QS_TIMER)) != 0) ticks = 0;
    if (++ticks < 3) return;
    KillTimer(nullptr, timer);
    gui().quit(0);
  }
  static inline int ticks = 0;
  static BOOL CALLBACK countWindow(HWND, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    return TRUE;
  }
  static std::string lastLine() {
    const IBReport& report = *gui().report();
    return report.lineCount() ? narrow(report.lineAt(report.lineCount() - 1)) : "";
  }
  static std::string reportLines() { return narrow(reportText(*gui().report()).view()); }
  static HWND ownWindowOf(IView* view) { return static_cast<OwnView*>(query<OwnView>(view))->window; }
  static void press(WPARAM key) {
    PostMessageW(GetFocus(), WM_KEYDOWN, key, 1);
    run();
  }

  IFrameWindow* frame_ = nullptr;
};

// For the product's own view.
class TestPages final : public BSmartObject, public IDocument, public IPagedDocument {
  CORVIX_IDENTITY(TestPages, 0x5E0B7C94, 0xD13A62F8, 0x47C9E01B, 0xA68F35D2, BSmartObject, IDocument, IPagedDocument)

 public:
  const wchar_t* location() const noexcept override { return L"C:\\a.pages"; }
  const wchar_t* title() const noexcept override { return L"a.pages"; }
  bool isModified() const noexcept override { return false; }
  const wchar_t* formatName() const noexcept override { return L"DocFormat.Pages"; }
  bool isReadOnly() const noexcept override { return true; }
  IStateList* history() override { return nullptr; }
  i32 pageCount() const noexcept override { return 2; }
  bool pageSize(i32, double* width, double* height) const noexcept override {
    return *width = 300, *height = 400, true;
  }
  bool drawPage(i32, IAGDC&, const Matrix&, IDrawWatch*) override { return true; }
};

using WindowSearch = std::pair<const wchar_t*, HWND>;

BOOL CALLBACK compareClass(HWND child, LPARAM data) {
  auto& [wanted, found] = *reinterpret_cast<WindowSearch*>(data);
  wchar_t own[64] = L"";
  GetClassNameW(child, own, 64);
  if (!std::wcscmp(own, wanted)) found = child;
  return !found;
}

HWND findInside(HWND parent, const wchar_t* className) {
  WindowSearch search = {className, nullptr};
  EnumChildWindows(parent, &compareClass, reinterpret_cast<LPARAM>(&search));
  return search.second;
}

TEST_F(FrameTest, OutlivesWhatFailsInAView) {
  const auto sound = make<TestDocument>();
  const struct {
    Where where;
    bool opens;
    const char* said;
  } rows[] = {{Where::SetDocument, false, " cannot show a.test: "},
              {Where::Attach, false, " cannot show a.test: "},
              {Where::Created, false, " cannot show a.test: "},
              {Where::Refuses, false, " cannot show a.test."},
              {Where::Words, true, "was closed: "},
              {Where::Message, true, "was closed: "},
              {Where::Sent, true, "was closed: "},
              {Where::Action, true, "was closed: "},
              {Where::Detach, true, ""}};
  for (const auto& row : rows) {
    for (const Fault how : {Fault::Throws, Fault::Crashes}) {
      if (row.where == Where::Words && how == Fault::Throws) continue;  // it is noexcept: the program would end
      SCOPED_TRACE(testing::Message() << "row " << &row - rows << (how == Fault::Throws ? ", throws" : ", crashes"));
      gui().report()->clear();
      IView* const first = frame_->openView(sound.get());
      ASSERT_TRUE(first);
      const auto document = make<TestDocument>();
      if (!row.opens) world.where = row.where, world.how = how;
      OwnView* const view = query<OwnView>(frame_->openView(document.get()));  // else the next that fits
      EXPECT_EQ(view != nullptr, row.opens);
      world.where = row.where, world.how = how;
      if (view) {
        PostMessageW(view->window, kDoIt, 0, 0);
        SendMessageW(window(), WM_SIZE, 0, 0);
        SetWindowPos(window(), nullptr, 0, 0, 700 + static_cast<int>(how), 500, SWP_NOMOVE | SWP_NOZORDER);
        shell().actionManager()->processAction(L"Test.Routed", nullptr);
        run();
        if (row.where == Where::Detach) {
          EXPECT_TRUE(frame_->closeView(view));
        }
      }
      run();
      EXPECT_NE(reportLines().find(row.said), std::string::npos) << reportLines();
      world.where = Where::Nowhere;
      // Where every view fails the sound one is gone, too, and is not tried again for its document.
      while (frame_->viewCount()) frame_->closeView(frame_->viewAt(0));
      EXPECT_EQ(narrow(document->title()), "a.test");
      closeFrame();
      world.alive = 0;  // what crashed while it was taken apart may be left
      frame_ = gui().createFrame(L"Test");
      ASSERT_TRUE(frame_);
      frame_->show(true);
    }
  }
}

TEST_F(FrameTest, OutlivesWhatFailsInAPanel) {
  const struct {
    Where where;
    bool opens;
    const char* said;
  } rows[] = {{Where::Attach, false, "The panel Own cannot be shown: "},
              {Where::Refuses, false, "The panel Own cannot be shown."},
              {Where::SetDocument, true, "The panel Own was closed: "},
              {Where::Message, true, "The panel Own was closed: "},
              {Where::Sent, true, "The panel Own was closed: "}};
  const auto document = make<TestPages>();
  for (const auto& row : rows) {
    for (const Fault how : {Fault::Throws, Fault::Crashes}) {
      SCOPED_TRACE(testing::Message() << "row " << &row - rows << (how == Fault::Throws ? ", throws" : ", crashes"));
      gui().report()->clear();
      IView* const view = frame_->openView(document.get());
      world.how = how;
      if (row.where != Where::Sent) world.where = row.where;  // while it is made nobody is between
      EXPECT_EQ(frame_->showPanel(L"Panel.Own", true), row.opens);
      world.where = row.where;
      if (const HWND panel = findInside(window(), L"CorvixTestView")) {
        SendMessageW(panel, kDoIt, 0, 0);
        SetWindowPos(panel, nullptr, 0, 0, 10, 10, SWP_NOMOVE);
      }
      run();
      EXPECT_EQ(reportLines().find(row.said), 0u) << reportLines();
      EXPECT_EQ(frame_->activeView(), view) << "the document stays";
      EXPECT_FALSE(frame_->isPanelShown(L"Panel.Own") || frame_->showPanel(L"Panel.Own", true));
      world.where = Where::Nowhere;
      frame_->showPanel(L"Panel.Own", false);  // it would be there again with the next frame
      closeFrame();
      world.alive = 0;  // what crashed while it was taken apart may be left
      frame_ = gui().createFrame(L"Test");
      ASSERT_TRUE(frame_);
      frame_->show(true);
    }
  }
  ASSERT_TRUE(frame_->showPanel(L"Panel.Own", true)) << "another frame tries it again";
  frame_->showPanel(L"Panel.Own", false);
}

TEST_F(FrameTest, RoutesActionsFromTheFocusOutwards) {
  const auto document = make<TestDocument>();
  const auto ask = [] {
    journal().clear();
    const int can = shell().actionManager()->validateAction(L"Test.Routed", nullptr);
    shell().actionManager()->processAction(L"Test.Routed", nullptr);
    return journal() + (can == notify::kTaken ? "" : ", refused before");
  };
  EXPECT_EQ(ask(), "itself, refused before");
  IView* const view = frame_->openView(document.get());
  SetFocus(ownWindowOf(view));
  EXPECT_EQ(ask(), "IDocumentView");
  ASSERT_TRUE(frame_->showPanel(L"Panel.Own", true));
  EXPECT_EQ(ask(), "IDocumentView");
  press(VK_F6);
  EXPECT_NE(GetFocus(), ownWindowOf(view));
  EXPECT_EQ(ask(), "IDocumentPanel");
  press(VK_F6);
  EXPECT_EQ(GetFocus(), ownWindowOf(view)) << "round the panes and back";
  EXPECT_EQ(ask(), "IDocumentView");
}

TEST_F(FrameTest, KeepsWhereItIsAndWhatIsNotThere) {
  const std::wstring key = std::wstring(applicationKey()) + L"\\Windows\\Test";
  const auto stored = [&](const std::wstring& panel, const wchar_t* value) {
    wchar_t text[80] = L"nothing";
    DWORD size = sizeof text;
    RegGetValueW(HKEY_CURRENT_USER, (key + panel).c_str(), value, RRF_RT_REG_SZ, nullptr, text, &size);
    return narrow(text);
  };
  const auto store = [&](const std::wstring& panel, const wchar_t* value, const wchar_t* text) {
    const std::size_t bytes = (std::wcslen(text) + 1) * sizeof *text;
    RegSetKeyValueW(HKEY_CURRENT_USER, (key + panel).c_str(), value, REG_SZ, text, static_cast<DWORD>(bytes));
  };
  const auto again = [&] {
    closeFrame();
    frame_ = gui().createFrame(L"Test");
    frame_->show(true);
    run();
  };
  const RECT place = {30, 40, 530, 440};
  MoveWindow(window(), place.left, place.top, place.right - place.left, place.bottom - place.top, TRUE);
  ASSERT_TRUE(frame_->showPanel(L"Panel.Own", true));
  store(L"\\Panel.Away", L"Side", L"top");
  again();
  RECT now = {};
  GetWindowRect(window(), &now);
  EXPECT_TRUE(EqualRect(&now, &place)) << now.left << ' ' << now.top << ' ' << now.right << ' ' << now.bottom;
  EXPECT_TRUE(frame_->isPanelShown(L"Panel.Own"));
  EXPECT_EQ(stored(L"\\Panel.Own", L"Side") + stored(L"\\Panel.Own", L"Size"), "right150");
  EXPECT_EQ(stored(L"\\Panel.Away", L"Side"), "top") << "it comes back to where it was";
  // What is no place is not taken; the window is where it can be seen.
  for (const wchar_t* const text :
       {L"", L"x", L"1 2", L"-30000 -30000 -29000 -29000 0", L"0 0 1 1 0", L"0 0 99999999 9 0"}) {
    store(L"", L"Placement", text);
    closeFrame();
    store(L"", L"Placement", text);
    frame_ = gui().createFrame(L"Test");
    frame_->show(true);
    GetWindowRect(window(), &now);
    EXPECT_TRUE(MonitorFromRect(&now, MONITOR_DEFAULTTONULL) && now.right - now.left > 200) << narrow(text);
  }
  EXPECT_FALSE(frame_->showPanel(L"Panel.Away", true) || frame_->showPanel(nullptr, true) ||
               frame_->isPanelShown(nullptr));
  frame_->showPanel(L"Panel.Own", false);
}

TEST_F(FrameTest, MakesOfAThousandPanelsThoseThatAreSeen) {
  OwnView::words = L"many";
  const auto document = make<TestDocument>();
  const int before = world.made;
  frame_->openView(document.get());
  run();
  EXPECT_EQ(world.made - before, 2) << "the view, and the panel in front";
  EXPECT_TRUE(frame_->isPanelShown(panelName(kPanels - 1).c_str()));
  ASSERT_TRUE(frame_->showPanel(panelName(500).c_str(), true));
  EXPECT_EQ(world.made - before, 3);
  OwnView::words = L"view.test";
  gui().refreshActions();
  run();
  EXPECT_FALSE(frame_->isPanelShown(panelName(500).c_str()));
}

// Takes messages of a window, or fails, or takes itself away.
class Target final : public IMsgTarget {
  CORVIX_IDENTITY(Target, 0x7499FECF, 0x1058F674, 0x9AFAE021, 0x7DC985A0, IMsgTarget)

 public:
  enum class Way { Sees, Takes, Throws, Crashes, Leaves };
  Target(HWND window, Way way) : window_(window), way_(way) {}
  bool onMessage(u32 message, std::uintptr_t, std::intptr_t, std::intptr_t& result) override {
    if (message != kDoIt) return false;
    ++told;
    result = 77;
    if (way_ == Way::Throws) throw std::runtime_error("it went wrong");
    volatile int* const nowhere = nullptr;
    if (way_ == Way::Crashes) *nowhere = 1;
    if (way_ == Way::Leaves) shell().guiManager()->removeMessageTarget(window_, this);
    return way_ == Way::Takes;
  }
  int told = 0;

 private:
  HWND window_;
  Way way_;
};

TEST_F(FrameTest, HasTargetsTakeTheMessagesOfAWindow) {
  const struct {
    Target::Way way;
    LRESULT result;
    int told, behind;  // twice asked
  } rows[] = {{Target::Way::Sees, 0, 2, 2},
              {Target::Way::Takes, 77, 2, 0},
              {Target::Way::Throws, 0, 1, 2},
              {Target::Way::Crashes, 0, 1, 2},
              {Target::Way::Leaves, 0, 1, 2}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    const HWND one = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    Target behind(one, Target::Way::Sees), target(one, row.way);
    EXPECT_TRUE(gui().addMessageTarget(one, &behind) && gui().addMessageTarget(one, &target));
    EXPECT_FALSE(gui().addMessageTarget(one, &target)) << "it is there";
    EXPECT_EQ(SendMessageW(one, kDoIt, 0, 0), row.result);
    EXPECT_EQ(SendMessageW(one, kDoIt, 0, 0), row.result);
    EXPECT_EQ(target.told, row.told);
    EXPECT_EQ(behind.told, row.behind);
    EXPECT_TRUE(gui().removeMessageTarget(one, &behind));
    EXPECT_FALSE(gui().removeMessageTarget(one, &behind));
    DestroyWindow(one);
  }
  Target target(nullptr, Target::Way::Sees);
  EXPECT_FALSE(gui().addMessageTarget(nullptr, &target) || gui().addMessageTarget(window(), nullptr) ||
               gui().addMessageTarget(GetDesktopWindow(), &target) || gui().removeMessageTarget(nullptr, nullptr));
}

TEST_F(FrameTest, ShowsProgressThatTakesLongAndStopsIt) {
  const HWND bar = FindWindowExW(window(), nullptr, PROGRESS_CLASSW, nullptr);
  const HWND stop = FindWindowExW(window(), nullptr, L"BUTTON", nullptr);
  const auto isShown = [](HWND one) { return (GetWindowLongW(one, GWL_STYLE) & WS_VISIBLE) != 0; };
  const auto change = [](i32 id, i32 position, i32 flags) {
    return shell().changeProgress(id, 0, 100, position, flags);
  };
  const struct {
    i32 flags;
    DWORD afterMs;
    bool isShown, canStop;
  } rows[] = {{0, 0, false, false},
              {0, 350, true, false},
              {kProgressCanStop, 350, true, true},
              {kProgressIsHidden, 350, false, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    const i32 id = shell().newProgressId();
    shell().startProgress(id, 0, 100, 0, row.flags);
    Sleep(row.afterMs);
    EXPECT_EQ(change(id, 40, row.flags), notify::kGoOn);
    EXPECT_EQ(isShown(bar), row.isShown);
    EXPECT_EQ(isShown(stop), row.canStop);
    if (row.isShown) {
      EXPECT_EQ(SendMessageW(bar, PBM_GETPOS, 0, 0), 40);
    }
    if (row.canStop) {
      PostMessageW(stop, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
      PostMessageW(stop, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
    }
    EXPECT_EQ(change(id, 50, row.flags), row.canStop ? notify::kStop : notify::kGoOn);
    shell().stopProgress(id, 0, 100, 100, row.flags);
    EXPECT_FALSE(isShown(bar) || isShown(stop));
  }
}

// The calls of gui.dll for windows, one of which is refused: without a display the first.
int windowsLeft = 0;
decltype(&CreateWindowExW) realCreate = nullptr;

HWND WINAPI createSome(DWORD exStyle, LPCWSTR name, LPCWSTR text, DWORD style, int x, int y, int width, int height,
                       HWND parent, HMENU menu, HINSTANCE module, LPVOID argument) {
  return windowsLeft-- > 0 ? realCreate(exStyle, name, text, style, x, y, width, height, parent, menu, module, argument)
                           : nullptr;
}

TEST_F(FrameTest, SaysThatThereAreNoWindows) {
  void** const slot = importSlotOf(GetModuleHandleW(L"gui.dll"), "CreateWindowExW");
  ASSERT_TRUE(slot);
  realCreate = reinterpret_cast<decltype(realCreate)>(*slot);
  DWORD protection = 0;
  VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
  int refused = 0;
  for (IFrameWindow* second = nullptr; !second && refused < 100; ++refused) {
    gui().report()->clear();
    windowsLeft = refused;
    *slot = reinterpret_cast<void*>(&createSome);
    second = gui().createFrame(L"Second");
    *slot = reinterpret_cast<void*>(realCreate);
    EXPECT_EQ(lastLine(), second ? "" : "No window could be made. Is there a display?") << refused;
    if (second) DestroyWindow(windowOf(second));
  }
  VirtualProtect(slot, sizeof *slot, protection, &protection);
  EXPECT_GT(refused, 4);
  EXPECT_EQ(gui().mainWindow(), frame_);
}

SIZE sizeOf(HWND window) {
  RECT area = {};
  GetWindowRect(window, &area);
  return {area.right - area.left, area.bottom - area.top};
}

TEST_F(FrameTest, TakesTheResolutionOfAnotherScreen) {
  const Resolution resolution(96);
  const auto document = make<TestPages>();
  IPagedView* const view = query<IPagedView>(frame_->openView(document.get()));
  ASSERT_TRUE(view && frame_->showPanel(L"Panel.Own", true) && frame_->showPanel(L"Panel.Report", true));
  view->setZoom(1);
  const HWND toolbar = findInside(window(), TOOLBARCLASSNAMEW), status = findInside(window(), STATUSCLASSNAMEW),
             list = findInside(window(), WC_LISTVIEWW), pages = findInside(window(), L"CorvixPages"),
             panel = GetParent(GetParent(findInside(window(), L"CorvixTestView")));
  const auto fontOf = [](HWND one) {
    LOGFONTW font = {};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(one, WM_GETFONT, 0, 0)), sizeof font, &font);
    return static_cast<long>(std::abs(font.lfHeight));
  };
  const auto look = [&](int dpi) {
    const RECT wanted = {0, 0, 5 * dpi, 4 * dpi};
    resolution.change(window(), static_cast<UINT>(dpi), wanted);
    run();
    int icon = 0, ignored = 0;
    ImageList_GetIconSize(reinterpret_cast<HIMAGELIST>(SendMessageW(toolbar, TB_GETIMAGELIST, 0, 0)), &icon, &ignored);
    SCROLLINFO bar = {sizeof bar, SIF_RANGE, 0, 0, 0, 0, 0};
    GetScrollInfo(pages, SB_VERT, &bar);
    EXPECT_EQ(view->zoom(), 1);
    return std::vector<long>{fontOf(toolbar),   fontOf(status),   fontOf(list), icon,
                             sizeOf(status).cy, sizeOf(panel).cx, bar.nMax,     sizeOf(window()).cx};
  };
  const std::vector<long> first = look(96);
  for (const int dpi : {192, 144, 192}) {
    const std::vector<long> now = look(dpi);
    for (std::size_t i = 0; i < first.size(); ++i)
      EXPECT_NEAR(now[i], first[i] * dpi / 96, std::max(2L, first[i] / 8)) << "value " << i << " at " << dpi;
  }
  EXPECT_EQ(look(96), first);
  const int before = freeGdiObjects();
  const int rounds = soak(4, 1000);
  for (int i = 0; i < rounds; ++i) look(i % 2 ? 96 : 192);
  EXPECT_GT(freeGdiObjects(), before - rounds) << "none a round; what is being drawn may hold one";
  frame_->showPanel(L"Panel.Own", false);
  frame_->showPanel(L"Panel.Report", false);
}

TEST_F(FrameTest, LeavesNothingBehindInManyRounds) {
  const auto document = make<TestDocument>();
  const auto roundOfViews = [&] { EXPECT_TRUE(frame_->closeView(frame_->openView(document.get()))); };
  const auto roundOfFrames = [&] {
    frame_->showPanel(L"Panel.Own", true);
    roundOfViews();
    closeFrame();
    frame_ = gui().createFrame(L"Test");
    frame_->show(true);
    run();
  };
  struct Left {
    std::size_t blocks, handle;
    int gdiObjects, windows;
  };
  constexpr std::size_t kFew = 9;
  const auto left = [&] {
    Left now = {0, 0, freeGdiObjects(), 0};
    EnumThreadWindows(GetCurrentThreadId(), &FrameTest::countWindow, reinterpret_cast<LPARAM>(&now.windows));
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    now.handle = reinterpret_cast<std::uintptr_t>(event) / 4;
    CloseHandle(event);
    now.blocks = heapBlocksInUse();
    return now;
  };
  for (int i = 0; i < 3; ++i) roundOfFrames();  // the system keeps some of the first
  left();
  for (const bool ofFrames : {false, true}) {
    SCOPED_TRACE(ofFrames ? "frames" : "views");
    const Left before = left();
    const int rounds = soak(ofFrames ? 10 : 100, 1000);
    for (int i = 0; i < rounds; ++i) ofFrames ? roundOfFrames() : roundOfViews();
    run();
    const Left after = left();
    EXPECT_EQ(after.windows, before.windows);
    EXPECT_EQ(after.gdiObjects, before.gdiObjects);
    EXPECT_LT(after.handle, before.handle + kFew) << "handles of the kernel, by the value of a new one";
    EXPECT_LT(after.blocks, before.blocks + kFew) << "lists may have grown";
  }
  frame_->showPanel(L"Panel.Own", false);
}

}  // namespace

}  // namespace corvix
