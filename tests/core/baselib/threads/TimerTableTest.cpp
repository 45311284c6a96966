#include "core/baselib/threads/TimerTable.h"

#include "tests/support/ImportSlot.h"
#include "tests/support/MessageLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <stdexcept>
#include <vector>

extern "C" decltype(&SetTimer) setTimerSlot CORVIX_IMPORTED(SetTimer, "@16");
extern "C" decltype(&KillTimer) killTimerSlot CORVIX_IMPORTED(KillTimer, "@8");

namespace corvix {
namespace {

std::vector<u32> heard;

void hear(i32, u32 argument) { heard.push_back(argument); }

void hearOnce(i32 index, u32 argument) {
  heard.push_back(argument);
  timerData.stop(index);
}

void waitFor(std::size_t count) {
  testing_support::runMessageLoop(2000, [=] { return heard.size() >= count; });
}

TEST(TimerTable, RestartReplacesAndStopEnds) {
  heard.clear();
  const i32 index = timerData.start(60000, hear, 1);
  EXPECT_EQ(timerData.start(10, hear, 2, index), index);
  waitFor(3);  // again and again
  EXPECT_EQ(heard, std::vector<u32>(heard.size(), 2));
  timerData.stop(index);
  timerData.stop(index);
  const std::size_t ticks = heard.size();  // on a busy machine one more may have come
  EXPECT_GE(ticks, 3u);
  testing_support::runMessageLoop(60, [] { return false; });
  EXPECT_EQ(heard.size(), ticks);
}

u32 givenBack = 0;
const auto realKillTimer = killTimerSlot;

BOOL WINAPI killAndCount(HWND window, UINT_PTR timer) {
  ++givenBack;
  return realKillTimer(window, timer);
}

TEST(TimerTable, RestartGivesTheSystemsTimerBack) {
  const testing_support::ImportSlot slot(killTimerSlot, killAndCount);
  givenBack = 0;
  TimerData table;
  const i32 index = table.start(60000, hear, 1);
  EXPECT_EQ(givenBack, 0u);
  table.start(60000, hear, 2, index);
  EXPECT_EQ(givenBack, 1u);
  table.stop(index);
  EXPECT_EQ(givenBack, 2u);
}

TEST(TimerTable, CallbacksMayStopStartAndThrow) {
  heard.clear();
  timerData.start(10, hearOnce, 5);
  timerData.start(
      10,
      [](i32 index, u32 argument) {
        timerData.start(10, hearOnce, argument + 1, index);
        heard.push_back(argument);
        throw std::runtime_error("goes no further");
      },
      7);
  waitFor(3);
  std::sort(heard.begin(), heard.end());
  EXPECT_EQ(heard, (std::vector<u32>{5, 7, 8}));
}

TEST(TimerTable, SlotsAreReusedFromTheHighestDown) {
  TimerData table;
  std::vector<i32> indices;
  for (int i = 0; i < 17; ++i) indices.push_back(table.start(60000, hear, 0));
  EXPECT_EQ(indices[0], 0);
  for (int i = 1; i < 16; ++i) EXPECT_EQ(indices[static_cast<std::size_t>(i)], 16 - i);
  EXPECT_EQ(indices[16], 16);  // the first of the next sixteen
  EXPECT_EQ(table.slotCount(), 32);
  for (i32 index : {3, 30, 9}) table.stop(index);
  EXPECT_EQ(table.start(60000, hear, 0), 31);
  EXPECT_EQ(table.start(60000, hear, 0, 9), 9);  // an empty slot by its number
  for (i32 index : {32, 1000, -2}) EXPECT_EQ(table.start(60000, hear, 0, index), TimerData::kNoTimer) << index;
  for (i32 index = -2; index < 40; ++index) table.stop(index);
  std::set<i32> expected;  // the free slots
  for (i32 slot = 0; slot < table.slotCount(); ++slot) expected.insert(slot);
  std::mt19937 random(9);
  for (int step = 0; step < 500; ++step) {
    const i32 some = static_cast<i32>(random() % static_cast<u32>(table.slotCount()));
    if (random() % 100 < 40) {
      table.stop(some);
      expected.insert(some);
    } else if (random() % 100 < 10) {
      EXPECT_EQ(table.start(60000, hear, 0, some), some);
      expected.erase(some);
    } else {
      const i32 slots = table.slotCount();
      const bool grows = expected.empty();
      const i32 highest = grows ? slots : *expected.rbegin();
      for (i32 slot = slots; grows && slot < slots + 16; ++slot) expected.insert(slot);
      ASSERT_EQ(table.start(60000, hear, 0), highest) << step;
      expected.erase(highest);
    }
  }
  for (i32 slot = 0; slot < table.slotCount(); ++slot) table.stop(slot);
}

TEST(TimerTable, UnknownTimerMessagesAreIgnored) {
  heard.clear();
  const i32 index = timerData.start(10, hear, 1);
  MSG message;
  while (!GetMessageW(&message, nullptr, WM_TIMER, WM_TIMER)) {
  }
  message.wParam ^= 0x5555;
  DispatchMessageW(&message);
  EXPECT_TRUE(heard.empty());
  timerData.stop(index);
}

UINT_PTR WINAPI noTimer(HWND, UINT_PTR, UINT, TIMERPROC) { return 0; }

TEST(TimerTable, WhenTheSystemHasNoTimerLeftTheEntryGoes) {
  TimerData table;
  const i32 running = table.start(60000, hear, 1);
  {
    const testing_support::ImportSlot slot(setTimerSlot, noTimer);
    EXPECT_EQ(table.start(10, hear, 1), TimerData::kNoTimer);
    EXPECT_EQ(table.start(10, hear, 1, running), TimerData::kNoTimer);
  }
  EXPECT_EQ(table.slotCount(), 16);
  EXPECT_EQ(table.start(60000, hear, 1), 15);
  EXPECT_EQ(table.start(60000, hear, 1), 14);
  for (i32 index : {15, 14}) table.stop(index);
}

}  // namespace
}  // namespace corvix
