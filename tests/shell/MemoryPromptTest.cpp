// What the shell does for the memory manager.
#include "core/baselib/memory/AutoRealizePool.h"
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/TimerTable.h"
#include "shell/Shell.h"
#include "tests/core/baselib/system/MessageLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace corvix {
namespace {

std::wstring boxText;
int boxAnswer;

LRESULT CALLBACK answerBox(int code, WPARAM wParam, LPARAM lParam) {
  const auto* const message = reinterpret_cast<const CWPRETSTRUCT*>(lParam);
  if (code >= 0 && message->message == WM_INITDIALOG) {
    wchar_t text[100];
    GetDlgItemTextW(message->hwnd, 65535, text, 100);
    boxText = text;
    for (int button : {IDRETRY, IDCANCEL, IDOK}) boxText += GetDlgItem(message->hwnd, button) ? L" +" : L" -";
    EndDialog(message->hwnd, boxAnswer);
  }
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST(Shell, AsksTheUserWhenMemoryRunsOut) {
  IShell& shell = *IShell::getInstance();
  const bool wasUnattended = shell.isUnattended();
  HHOOK const hook = SetWindowsHookExW(WH_CALLWNDPROCRET, answerBox, nullptr, GetCurrentThreadId());
  struct Row {
    bool isUnattended;
    int answer;
    bool retries;
    const wchar_t* text;
  };
  for (const Row& row : {Row{false, IDRETRY, true, L"Not enough memory + + -"},
                         Row{false, IDCANCEL, false, L"Not enough memory + + -"}, Row{true, IDRETRY, false, L""}}) {
    boxText.clear();
    boxAnswer = row.answer;
    shell.setUnattended(row.isUnattended);
    EXPECT_EQ(shell.askToRetry(0), row.retries);
    EXPECT_EQ(boxText, row.text);
  }
  UnhookWindowsHookEx(hook);
  shell.setUnattended(wasUnattended);
}

std::atomic<unsigned long> goneOn;

class Guest : public BSmartObject {
  CORVIX_IDENTITY(Guest, 0x94C7E2D1, 0x4A05B83F, 0x8BD6410E, 0x73F92CA5, BSmartObject)

 public:
  ~Guest() override { goneOn = GetCurrentThreadId(); }
};

// Through the library itself: its timer, its shell and its exported data.
TEST(Shell, ReleasesOnItsOwnThreadWhatAnotherAdded) {
  IShell::getInstance();
  std::thread([] { BAutoRealizePool::add(make<Guest>().detach(), 0); }).join();
  testing::runMessageLoop(2500, [] { return goneOn != 0; });
  EXPECT_EQ(goneOn, GetCurrentThreadId());
  EXPECT_EQ(timerData.slotCount(), 16);
}

}  // namespace
}  // namespace corvix
