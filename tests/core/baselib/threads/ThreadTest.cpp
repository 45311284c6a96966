#include "core/baselib/threads/Thread.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/CriticalSection.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include <windows.h>

namespace corvix {
namespace {

std::atomic<int> ended, destroyed;

class Worker : public BThread {
  CORVIX_IDENTITY(Worker, 0xC7A1580E, 0x4D93B26F, 0xB4E8071C, 0x25F6D93A, BThread)

 public:
  explicit Worker(std::function<void(Worker&)> work, const wchar_t* name = nullptr)
      : BThread(name), work_(std::move(work)) {
    ended = 0;
    destroyed = 0;
  }
  ~Worker() override { ++destroyed; }

 protected:
  void run() override {
    work_(*this);
    ++ended;
  }

 private:
  std::function<void(Worker&)> work_;
};

TEST(Thread, StartsOnceRunsAndIsJoined) {
  HANDLE const go = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  auto worker = make<Worker>(
      [go](Worker& self) {
        EXPECT_FALSE(self.join());  // not itself
        WaitForSingleObject(go, INFINITE);
        Sleep(50);
      },
      L"worker");
  EXPECT_EQ(std::wstring(worker->name()), L"worker");
  EXPECT_TRUE(worker->join());  // not started
  EXPECT_FALSE(worker->isRunning());
  EXPECT_TRUE(worker->start());
  EXPECT_FALSE(worker->start());
  EXPECT_TRUE(worker->isRunning());
  EXPECT_FALSE(worker->join(1));
  SetEvent(go);
  worker.reset();  // waits
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(destroyed, 1);
  CloseHandle(go);
}

TEST(Thread, ReleasedByItselfGoesAtItsEnd) {
  auto* const worker = make<Worker>([](Worker& self) {
                         EXPECT_FALSE(self.release());
                         EXPECT_EQ(destroyed, 0);
                       }).detach();
  ASSERT_TRUE(worker->start());
  for (int i = 0; i < 200 && destroyed == 0; ++i) Sleep(10);
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(destroyed, 1);
}

TEST(Thread, WhatItsWorkThrowsEndsTheWorkAlone) {
  auto worker = make<Worker>([](Worker&) { throw 7; });
  ASSERT_TRUE(worker->start());
  EXPECT_TRUE(worker->join());
}

TEST(Thread, TheClientsSlotIsTheirs) {
  EXPECT_NE(BThread::m_TlsIndex, TLS_OUT_OF_INDEXES);
  EXPECT_EQ(TlsGetValue(BThread::m_TlsIndex), nullptr);
  TlsSetValue(BThread::m_TlsIndex, &ended);
  auto worker = make<Worker>([](Worker&) { EXPECT_EQ(TlsGetValue(BThread::m_TlsIndex), nullptr); });
  worker->start();
  worker->join();
  EXPECT_EQ(TlsGetValue(BThread::m_TlsIndex), &ended);
  TlsSetValue(BThread::m_TlsIndex, nullptr);
}

// Those that wait come in between the looks of others, or out of the system's sleep behind one that holds it long.
TEST(CriticalSection, IsHeldByOneThreadHoweverLongTheOthersWait) {
  SCriticalSection section;
  u32 holders = 0, taken = 0, wrong = 0;
  const auto take = [&](u32 times, u32 heldMs) {
    for (u32 i = 0; i < times; ++i) {
      section.enter();
      wrong += ++holders != 1 || section.heldCount() != 1;
      if (heldMs) Sleep(heldMs);
      ++taken;
      --holders;
      section.leave();
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) threads.emplace_back(take, 20000, 0);
  take(10, 5);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0u);
  EXPECT_EQ(taken, 60010u);
}

}  // namespace
}  // namespace corvix
