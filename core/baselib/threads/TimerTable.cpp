#include "core/baselib/threads/TimerTable.h"

#include "core/baselib/system/ForeignCall.h"

#include <algorithm>

#include <windows.h>

namespace corvix {

namespace {

constexpr i32 kSlotsAtATime = 16;

// After the table's end, while the library's other statics go, its lock is not touched.
constinit bool hasEnded = false;

}  // namespace

struct TimerData::Entry {
  Callback callback;
  u32 argument;
  i32 index;
  UINT_PTR timer;  // the system's, 0 while none runs
};

// Needs a name that the table can befriend.
struct TimerProcedure {
  static void CALLBACK run(HWND, UINT, UINT_PTR timer, DWORD) noexcept {
    TimerData::Callback callback = nullptr;
    u32 argument = 0;
    i32 index = TimerData::kNoTimer;
    if (hasEnded) return;
    {
      const SCriticalSection::Lock lock(timerData.section_);
      for (i32 i = 0; i < timerData.slotCount_ && !callback; ++i) {
        const TimerData::Entry* const entry = timerData.at(i);
        if (!entry || entry->timer != timer) continue;
        callback = entry->callback;
        argument = entry->argument;
        index = entry->index;
      }
    }
    if (!callback) return;
    callForeign(codeOf(callback), L"a timer's callback", [&] { callback(index, argument); });
  }
};

TimerData timerData;

TimerData::~TimerData() {
  static_assert(sizeof(void*) != 4 || sizeof(Entry) == 16);
  for (i32 i = slotCount_; i-- > 0;) _sfree(at(i));
  if (this == &timerData) hasEnded = true;
}

i32 TimerData::start(u32 intervalMs, Callback callback, u32 argument, i32 index) noexcept {
  if (hasEnded || !callback) return kNoTimer;
  const SCriticalSection::Lock lock(section_);
  Entry* const entry = findOrMake(index);
  if (!entry) return kNoTimer;
  if (entry->timer) KillTimer(nullptr, entry->timer);
  entry->callback = callback;
  entry->argument = argument;
  entry->timer = SetTimer(nullptr, 0, intervalMs, TimerProcedure::run);
  if (entry->timer) return entry->index;
  remove(entry->index);
  return kNoTimer;
}

void TimerData::stop(i32 index) noexcept {
  if (hasEnded) return;
  const SCriticalSection::Lock lock(section_);
  if (!isSlot(index) || !at(index)) return;
  if (at(index)->timer) KillTimer(nullptr, at(index)->timer);
  remove(index);
}

TimerData::Entry* TimerData::findOrMake(i32 index) noexcept {
  if (index == kNewTimer) index = freeSlot();
  if (!isSlot(index)) return nullptr;
  if (!at(index)) {
    if (auto* const made = static_cast<Entry*>(_smalloc(sizeof(Entry)))) at(index) = &(*made = {nullptr, 0, index, 0});
  }
  return at(index);
}

// The highest that is free, or the first of sixteen new ones; kNoTimer when there is no memory for those.
i32 TimerData::freeSlot() noexcept {
  for (i32 i = slotCount_; i-- > 0;) {
    if (!at(i)) return i;
  }
  const i32 first = slotCount_;
  if (!entries_.tryResize(static_cast<std::size_t>(first + kSlotsAtATime))) return kNoTimer;
  std::fill_n(entries_.get() + first, kSlotsAtATime, nullptr);
  slotCount_ += kSlotsAtATime;
  return first;
}

void TimerData::remove(i32 index) noexcept {
  _sfree(at(index));
  at(index) = nullptr;
}

}  // namespace corvix
