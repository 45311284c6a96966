// What the shell does for the memory manager.
#include "core/baselib/memory/AutoRealizePool.h"
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/threads/TimerTable.h"
#include "shell/Shell.h"
#include "tests/support/BoxAnswer.h"
#include "tests/support/MessageLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace corvix {
namespace {

TEST(Shell, AsksTheUserWhenMemoryRunsOut) {
  IShell& shell = *IShell::getInstance();
  const bool wasUnattended = shell.isUnattended();
  const struct {
    bool isUnattended;
    int answer;
    bool retries;
    const wchar_t *text, *buttons;
  } rows[] = {{false, IDRETRY, true, L"Not enough memory", L"CR"},
              {false, IDCANCEL, false, L"Not enough memory", L"CR"},
              {true, IDRETRY, false, L"", L""}};
  for (const auto& row : rows) {
    const testing_support::BoxAnswer box(row.answer);
    shell.setUnattended(row.isUnattended);
    EXPECT_EQ(shell.askToRetry(0), row.retries);
    EXPECT_EQ(box.text, row.text);
    EXPECT_EQ(box.buttons, row.buttons);
  }
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
  testing_support::runMessageLoop(2500, [] { return goneOn != 0; });
  EXPECT_EQ(goneOn, GetCurrentThreadId());
  EXPECT_EQ(timerData.slotCount(), 16);
}

}  // namespace
}  // namespace corvix
