#include "core/baselib/memory/AutoRealizePool.h"

#include "core/baselib/memory/MemoryShell_p.h"
#include "core/baselib/objects/Ref.h"
#include "tests/support/MessageLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace corvix {
namespace {

// Runs tasks between the messages of its thread.
class Shell : public IMemoryShell {
 public:
  Shell() { setMemoryShell(this); }
  ~Shell() { setMemoryShell(nullptr); }
  bool askToRetry(u32) override { return false; }
  bool runOnShellThread(void (*function)(void*), void* argument) override {
    const std::lock_guard lock(mutex_);
    tasks_.emplace_back(function, argument);
    return true;
  }
  void runTasks() {
    std::vector<std::pair<void (*)(void*), void*>> tasks;
    {
      const std::lock_guard lock(mutex_);
      tasks.swap(tasks_);
    }
    for (const auto& [function, argument] : tasks) function(argument);
  }

 private:
  std::mutex mutex_;
  std::vector<std::pair<void (*)(void*), void*>> tasks_;
};

std::atomic<int> alive;

// Notes when and where it went, and queues others on the way.
class Guest : public BSmartObject {
  CORVIX_IDENTITY(Guest, 0x2E64F0B8, 0x47C19D35, 0x8FB0A25E, 0xD13C7906, BSmartObject)

 public:
  struct Gone {
    unsigned long afterMs = 0;
    unsigned long thread = 0;
  };
  explicit Guest(Gone* gone = nullptr, int others = 0) : gone_(gone), others_(others) { ++alive; }
  ~Guest() override {
    --alive;
    if (gone_) *gone_ = {GetTickCount() - made_, GetCurrentThreadId()};
    if (others_ > 0) BAutoRealizePool::add(make<Guest>(nullptr, others_ - 1).detach(), 1000);
  }

 private:
  Gone* gone_;
  int others_;
  unsigned long made_ = GetTickCount();
};

TEST(AutoRealizePool, ReleasesOnTheTickAfterTheCount) {
  Shell shell;
  Guest::Gone gone[4];
  std::thread([&] { BAutoRealizePool::add(make<Guest>(&gone[3]).detach(), 0); }).join();
  const u32 ticks[] = {0, 2, 1000};
  for (int i = 0; i < 3; ++i) BAutoRealizePool::add(make<Guest>(&gone[i]).detach(), ticks[i]);
  testing_support::runMessageLoop(3600, [&shell] {
    shell.runTasks();
    return alive == 1;
  });
  const auto isOnTick = [](const Guest::Gone& one, unsigned long tick) {
    return one.thread == GetCurrentThreadId() && one.afterMs >= tick * 1000 - 100 && one.afterMs < tick * 1000 + 600;
  };
  EXPECT_TRUE(isOnTick(gone[0], 1)) << gone[0].afterMs;
  EXPECT_TRUE(isOnTick(gone[1], 3)) << gone[1].afterMs;
  EXPECT_EQ(gone[2].thread, 0u);
  EXPECT_TRUE(isOnTick(gone[3], 1)) << gone[3].afterMs;   // added where no message loop is
  std::thread([] { BAutoRealizePool::Clear(); }).join();  // not the thread of the timer
  EXPECT_EQ(alive, 0);
  shell.runTasks();
}

class Thrower : public BSmartObject {
  CORVIX_IDENTITY(Thrower, 0x7A3DC15E, 0x4B90E862, 0x95F724D0, 0x1C6E8AB3, BSmartObject)

 public:
  bool release() override { throw 1; }
};

TEST(AutoRealizePool, OneThatThrowsKeepsNobody) {
  Shell shell;
  Thrower thrower;
  for (u32 ticks : {0u, 1u}) {
    BAutoRealizePool::add(&thrower, ticks);
    BAutoRealizePool::add(make<Guest>().detach(), ticks);
  }
  testing_support::runMessageLoop(4000, [&shell] {
    shell.runTasks();
    return alive == 0;
  });
  EXPECT_EQ(alive, 0);
  BAutoRealizePool::add(&thrower, 9);
  BAutoRealizePool::add(make<Guest>().detach(), 9);
  BAutoRealizePool::Clear();
  EXPECT_EQ(alive, 0);
}

TEST(AutoRealizePool, ClearReleasesWhatRemovalsAdd) {
  BAutoRealizePool::Clear();  // of nothing
  for (int i = 0; i < 3; ++i) BAutoRealizePool::add(make<Guest>(nullptr, 4).detach(), 7);
  BAutoRealizePool::Clear();
  EXPECT_EQ(alive, 0);
  MSG message;
  EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE));
}

}  // namespace
}  // namespace corvix
