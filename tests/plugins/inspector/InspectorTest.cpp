// The inspector as its user has it: by its keys and controls, in a message loop that knows nothing of it.
#include "plugins/inspector/IInspector.h"

#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/system/Log.h"
#include "shell/GlobalEvent.h"
#include "shell/Plugin.h"
#include "tests/graphics/GdiObjects.h"
#include "tests/support/HeapBlocks.h"
#include "tests/support/MessageLoop.h"

#include <array>
#include <cstdio>
#include <functional>
#include <thread>

#include <commctrl.h>
#include <gtest/gtest.h>

namespace corvix {

namespace {

using namespace testing_support;

constexpr unsigned long kLongestMs = 10000;

std::vector<HWND> windowsBelow(HWND parent) {
  std::vector<HWND> found;
  for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    found.push_back(child);
    for (const HWND inner : windowsBelow(child)) found.push_back(inner);
  }
  return found;
}

std::wstring cell(HWND list, int row, int column) {
  wchar_t text[300] = L"";
  ListView_GetItemText(list, row, column, text, 300);
  return text;
}

// The row with this text in a column; -1.
int rowOf(HWND list, int column, const std::wstring& text) {
  for (int row = 0; row < ListView_GetItemCount(list); ++row)
    if (cell(list, row, column) == text) return row;
  return -1;
}

// Closes the inspector when an event is raised.
class Closer : public IGlobalEventTarget {
  CORVIX_IDENTITY(Closer, 0x2D64CB69, 0x53B836EC, 0xC653B247, 0xB27A68F4, IGlobalEventTarget)

 public:
  explicit Closer(IInspector& inspector) : inspector_(inspector) { sender().addListener(this); }
  ~Closer() { sender().removeListener(this); }
  int onGlobalEvent(IGlobalEvent&) override {
    inspector_.show(false);
    return notify::kGoOn;
  }

 private:
  static BNotifySender& sender() { return IShell::getInstance()->pluginManager()->preEventSender(); }
  IInspector& inspector_;
};

class InspectorTest : public testing::Test {
 protected:
  void SetUp() override {
    IShell::startUnattended();
    inspector_ = createObject<IInspector>(manager(), L"Window.Inspector");
    ASSERT_TRUE(inspector_);
    inspector_->show(true);
    ASSERT_TRUE(window());
  }
  void TearDown() override { inspector_->show(false); }

  static IShell& shell() { return *IShell::getInstance(); }
  static IPluginManager& manager() { return *shell().pluginManager(); }
  HWND window() const { return static_cast<HWND>(inspector_->windowHandle()); }

  // The first visible one of a class, with this text if one is given.
  HWND control(const wchar_t* windowClass, const wchar_t* text = nullptr) const {
    for (const HWND one : windowsBelow(window())) {
      wchar_t itsClass[64], itsText[64];
      GetClassNameW(one, itsClass, 64);
      GetWindowTextW(one, itsText, 64);
      if (IsWindowVisible(one) && !_wcsicmp(itsClass, windowClass) && (!text || !wcscmp(text, itsText))) return one;
    }
    return nullptr;
  }
  HWND list() const { return control(WC_LISTVIEWW); }
  void select(int row) const {
    ListView_SetItemState(list(), -1, 0, LVIS_SELECTED);
    ListView_SetItemState(list(), row, LVIS_SELECTED, LVIS_SELECTED);
  }
  void click(const wchar_t* button) const { SendMessageW(control(L"BUTTON", button), BM_CLICK, 0, 0); }

  static bool happens(const std::function<bool()>& what) {
    runMessageLoop(kLongestMs, what);
    return what();
  }

  static void press(WPARAM key, bool withControl = false) {
    BYTE keys[256] = {};
    keys[VK_CONTROL] = withControl ? 0x80 : 0;
    SetKeyboardState(keys);
    PostMessageW(GetFocus(), WM_KEYDOWN, key, 1);
    runMessageLoop(20, [] { return false; });
    SetKeyboardState(std::array<BYTE, 256>().data());
  }

  // What one has opened and not closed.
  struct Left {
    std::size_t windows = 0, heapBlocks = 0;
    int gdiObjects = 0;
    u32 listeners = 0;
    bool operator==(const Left&) const = default;
  };
  static Left left() {
    Left now;
    EnumThreadWindows(GetCurrentThreadId(), &InspectorTest::count, reinterpret_cast<LPARAM>(&now.windows));
    for (u32 i = 0; i < kShellNotifications; ++i)
      now.listeners += shell().sender(static_cast<ShellNotification>(i)).listenerCount();
    now.listeners += manager().preEventSender().listenerCount() + manager().postEventSender().listenerCount();
    now.gdiObjects = freeGdiObjects();
    now.heapBlocks = heapBlocksInUse();
    return now;
  }
  static BOOL CALLBACK count(HWND one, LPARAM number) {
    wchar_t itsClass[64];
    GetClassNameW(one, itsClass, 64);
    *reinterpret_cast<std::size_t*>(number) += std::wstring_view(itsClass).starts_with(L"Corvix");
    return TRUE;
  }

  Ref<IInspector> inspector_;
};

TEST_F(InspectorTest, TurnsToEveryTabByKeyAndName) {
  const struct {
    const wchar_t* name;
    int column;
    const wchar_t* shown;  // null: nothing need be there
  } tabs[] = {{L"Modules", 0, L"worker.dll"},
              {L"Interfaces", 0, L"Window.Inspector"},
              {L"Settings", 4, L"General\\WebIntegrate"},
              {L"Log", 0, nullptr},
              {L"Events", 0, nullptr},
              {L"Memory", 0, L"system"}};
  BMemoryManager::getSystemPool();
  SetFocus(control(WC_TABCONTROLW));
  for (const auto& tab : tabs) {
    SCOPED_TRACE(testing::Message() << std::string(tab.name, tab.name + wcslen(tab.name)));
    const HWND shown = list();
    EXPECT_TRUE(!tab.shown || rowOf(shown, tab.column, tab.shown) >= 0);
    press(VK_TAB, true);
    EXPECT_NE(list(), shown);
    EXPECT_TRUE(inspector_->showTab(tab.name));
    EXPECT_EQ(list(), shown);
    press(VK_TAB, true);
  }
  EXPECT_GE(rowOf(list(), 0, L"worker.dll"), 0) << "behind the last comes the first";
  EXPECT_FALSE(inspector_->showTab(L"Nothing") || inspector_->showTab(nullptr));
  SetFocus(control(WC_TABCONTROLW));
  press(VK_TAB);
  EXPECT_EQ(GetFocus(), list()) << "the tabulator leads into the page";
}

TEST_F(InspectorTest, ChangesSettingsByTheirControlsAndSeesChanges) {
  ASSERT_TRUE(inspector_->showTab(L"Settings"));
  IBSettings& settings = *shell().settings();
  const HWND tree = control(WC_TREEVIEWW);
  const auto choose = [&](const wchar_t* group, const wchar_t* item) {
    const std::wstring wanted = std::wstring(group) + L"\\" + item;
    HTREEITEM at = TreeView_GetRoot(tree);
    for (; at; at = TreeView_GetNextVisible(tree, at)) {
      TreeView_SelectItem(tree, at);
      const int row = rowOf(list(), 4, wanted);
      if (row < 0) continue;
      select(row);
      return row;
    }
    return -1;
  };
  const auto write = [&](const wchar_t* text) {
    SetFocus(control(L"EDIT"));
    SetWindowTextW(control(L"EDIT"), text);
    press(VK_RETURN);
  };
  const struct {
    const wchar_t* group;
    const wchar_t* item;
    std::function<void()> act;
    Variant expected;
    const wchar_t* shown;
  } rows[] = {
      {L"Greeter", L"Polite", [&] { click(L"on"); }, false, L"false"},
      {L"Worker", L"Steps", [&] { write(L"7"); }, 7, L"7"},
      {L"Worker", L"Steps", [&] { write(L"3x"); }, 7, L"7"},
      {L"Worker", L"Steps", [&] { write(L"99999999999"); }, 7, L"7"},
      {L"Worker", L"Steps", [&] { click(L"&Default"); }, 5, L"5"},
      {L"Interface", L"RecentFileNo", [&] { write(L"12"); }, L"12", L"12"},
      {L"General", L"ApplyOptions", [&] { SetFocus(control(L"COMBOBOX")), press(VK_DOWN); }, 2, L"Never"},
      {L"Quality", L"GDCClipMode", [&] { click(L"&Hidden too"), choose(L"Quality", L"GDCClipMode"), click(L"on"); },
       false, L"false"},
      {L"Worker", L"Steps", [&] { settings.setValue(L"Worker", L"Steps", 9); }, 9, L"9"},  // by somebody else
      {L"Worker", L"Steps", [&] { std::thread([&] { settings.setValue(L"Worker", L"Steps", 11); }).join(); }, 11,
       L"11"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    choose(row.group, row.item);
    row.act();
    Variant value;
    settings.getValue(row.group, row.item, value);
    EXPECT_EQ(value, row.expected);
    const int at = choose(row.group, row.item);
    EXPECT_TRUE(happens([&] { return cell(list(), at, 1) == row.shown; }));
  }
}

TEST_F(InspectorTest, ShowsEventsAndNotificationsOfAllThreads) {
  ASSERT_TRUE(inspector_->showTab(L"Events"));
  SetFocus(control(L"EDIT"));
  SetWindowTextW(control(L"EDIT"), L"Morning");
  press(VK_RETURN);
  EXPECT_EQ(cell(list(), 0, 1), L"global event begins");
  EXPECT_GT(rowOf(list(), 2, L"0: the worker was up before Morning"), 0);
  EXPECT_GT(rowOf(list(), 1, L"global event ends"), rowOf(list(), 1, L"OnChangeStatusText"));
  click(L"&Clear");
  EXPECT_EQ(ListView_GetItemCount(list()), 0);
  std::thread([] {
    shell().changeStatusText(3,
                             L"from \x202E"
                             L"elsewhere");
  }).join();
  EXPECT_TRUE(happens([&] {
    return rowOf(list(), 2,
                 L"3: from \xFFFD"
                 L"elsewhere") == 0;
  }));
}

TEST_F(InspectorTest, ShowsTheEndOfTheLogWhileItIsWritten) {
  const WideString path = logPath();
  const auto write = [&](const char* text) {
    std::FILE* const file = _wfopen(path.c_str(), L"ab");
    ASSERT_TRUE(file);
    std::fputs(text, file);
    std::fclose(file);
  };
  write((std::string(100000, 'x') + "\r\nfirst\r\n").c_str());
  ASSERT_TRUE(inspector_->showTab(L"Log"));
  EXPECT_TRUE(happens([&] { return cell(list(), 0, 0) == L"first"; })) << "no part of a line";
  write("second\n");
  EXPECT_TRUE(happens([&] { return cell(list(), 1, 0) == L"second"; }));
  EXPECT_TRUE(DeleteFileW(path.c_str())) << "it is not held";
}

TEST_F(InspectorTest, MayBeClosedByWhoItTells) {
  const Closer closer(*inspector_);
  ASSERT_TRUE(inspector_->showTab(L"Events"));
  SetWindowTextW(control(L"EDIT"), L"Close");
  click(L"&Raise");
  EXPECT_FALSE(window());
}

TEST_F(InspectorTest, MakesAnObjectOfAnInterface) {
  ASSERT_TRUE(inspector_->showTab(L"Interfaces"));
  click(L"&Make one");
  EXPECT_TRUE(control(L"STATIC", L"Choose an interface first."));
  const int row = rowOf(list(), 0, L"Example.Greeter");
  select(row);
  click(L"&Make one");
  EXPECT_TRUE(control(L"STATIC", L"Made a Greeter, and released it."));
}

TEST_F(InspectorTest, LeavesNothingBehindHoweverItIsClosed) {
  ASSERT_TRUE(manager().createObject(L"Actions.Inspect")->release());
  const std::function<void()> ways[] = {[&] { press(VK_ESCAPE); }, [&] { SendMessageW(window(), WM_CLOSE, 0, 0); },
                                        [&] { inspector_->show(false); }, [] { shell().unInitialize(); }};
  shell().unInitialize();  // those of other modules go once
  const auto openAndClose = [&](const std::function<void()>& close) {
    EXPECT_EQ(shell().actionManager()->processAction(L"Inspect", nullptr), notify::kTaken);
    ASSERT_TRUE(window());
    const HWND first = window();
    inspector_->show(true);
    EXPECT_EQ(window(), first) << "there is one";
    for (const wchar_t* tab : {L"Interfaces", L"Settings", L"Log", L"Events", L"Memory"}) inspector_->showTab(tab);
    SetFocus(control(WC_TABCONTROLW));
    close();
    EXPECT_FALSE(window());
    runMessageLoop(20, [] { return false; });
  };
  for (const auto& way : ways) openAndClose(way);  // the system keeps some of the first
  Left before = left();
  before = left();  // what counting needs is there now
  for (const auto& way : ways) {
    openAndClose(way);
    const Left now = left();
    EXPECT_EQ(now.windows, before.windows) << "way " << &way - ways;
    EXPECT_EQ(now.listeners, before.listeners) << "way " << &way - ways;
    EXPECT_EQ(now.gdiObjects, before.gdiObjects) << "way " << &way - ways;
    EXPECT_EQ(now.heapBlocks, before.heapBlocks) << "way " << &way - ways;
  }
}

}  // namespace

}  // namespace corvix
