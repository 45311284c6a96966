#include "core/baselib/threads/TimerTable.h"

#include "core/baselib/heap/AddressIndex_p.h"
#include "core/baselib/system/ForeignCall.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#include <windows.h>

namespace corvix {

namespace {

constexpr i32 kSlotsAtATime = 16;

constexpr std::size_t groupOf(i32 slot) noexcept { return static_cast<std::size_t>(slot / kSlotsAtATime); }
constexpr u16 bitOf(i32 slot) noexcept { return static_cast<u16>(1u << slot % kSlotsAtATime); }

// After the table's end, while the library's other statics go, its lock is not touched.
constinit bool hasEnded = false;

}  // namespace

struct TimerData::Entry {
  Callback callback;
  u32 argument;
  i32 index;
  UINT_PTR timer;  // the system's, 0 while none runs
  Entry* sameBucket;
};

struct TimerData::Tables : HeapAllocated {
  AddressIndex<Entry, &Entry::timer> running;
  HeapBuffer<u16> free;  // a number for each sixteen slots, a bit for each slot
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
      if (const TimerData::Entry* const entry = timerData.tables_ ? timerData.tables_->running.find(timer) : nullptr) {
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
  static_assert(sizeof(void*) != 4 || offsetof(Entry, sameBucket) == 16);
  for (i32 i = slotCount_; i-- > 0;) _sfree(at(i));
  delete tables_;
  if (this == &timerData) hasEnded = true;
}

i32 TimerData::start(u32 intervalMs, Callback callback, u32 argument, i32 index) noexcept {
  if (hasEnded || !callback) return kNoTimer;
  const SCriticalSection::Lock lock(section_);
  Entry* const entry = findOrMake(index);
  if (!entry) return kNoTimer;
  kill(*entry);
  entry->callback = callback;
  entry->argument = argument;
  entry->timer = SetTimer(nullptr, 0, intervalMs, TimerProcedure::run);
  if (!entry->timer) {
    remove(entry->index);
    return kNoTimer;
  }
  tables_->running.enter(entry);
  return entry->index;
}

void TimerData::stop(i32 index) noexcept {
  if (hasEnded) return;
  const SCriticalSection::Lock lock(section_);
  if (!isSlot(index) || !at(index)) return;
  kill(*at(index));
  remove(index);
}

TimerData::Entry* TimerData::findOrMake(i32 index) noexcept {
  if (index == kNewTimer) index = freeSlot();
  if (!isSlot(index)) return nullptr;
  if (!at(index)) {
    auto* const made = static_cast<Entry*>(_smalloc(sizeof(Entry)));
    if (!made) return nullptr;
    at(index) = &(*made = {nullptr, 0, index, 0, nullptr});
    tables_->free[groupOf(index)] &= static_cast<u16>(~bitOf(index));
  }
  return at(index);
}

// The highest that is free, or the first of sixteen new ones; kNoTimer when there is no memory for those.
i32 TimerData::freeSlot() noexcept {
  for (i32 group = slotCount_ / kSlotsAtATime; group-- > 0;) {
    if (const u16 free = tables_->free[static_cast<std::size_t>(group)])
      return group * kSlotsAtATime + static_cast<i32>(std::bit_width(free)) - 1;
  }
  if (!tables_) {
    if (void* const place = _smalloc(sizeof(Tables))) tables_ = new (place) Tables;
  }
  const i32 first = slotCount_;
  if (!tables_ || !tables_->free.tryResize(groupOf(first) + 1) ||
      !entries_.tryResize(static_cast<std::size_t>(first + kSlotsAtATime)))
    return kNoTimer;
  std::fill_n(entries_.get() + first, kSlotsAtATime, nullptr);
  tables_->free[groupOf(first)] = 0xFFFF;
  slotCount_ += kSlotsAtATime;
  return first;
}

void TimerData::kill(Entry& entry) noexcept {
  if (!entry.timer) return;
  KillTimer(nullptr, entry.timer);
  tables_->running.leave(&entry);
  entry.timer = 0;
}

void TimerData::remove(i32 index) noexcept {
  _sfree(at(index));
  at(index) = nullptr;
  tables_->free[groupOf(index)] |= bitOf(index);
}

}  // namespace corvix
