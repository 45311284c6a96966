// timerData: the callback timers of the process, on the system's thread timers.
//
// A timer belongs to the thread that starts it: its callback runs there, from the thread's message loop, again
// and again until it is stopped. Start it anew and stop it on the same thread; stopped on another, the system's
// timer stays and its messages are ignored.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/system/CriticalSection.h"

namespace corvix {

class CORVIX_API TimerData {
 public:
  // What it throws goes no further than the log. The table's lock is not held: it may start and stop timers, its own
  // too.
  using Callback = void (*)(i32 index, u32 argument);

  static constexpr i32 kNewTimer = -1;
  static constexpr i32 kNoTimer = -1;

  TimerData() noexcept = default;

  // Forgets the timers without stopping them.
  ~TimerData();
  TimerData(const TimerData&) = delete;
  TimerData& operator=(const TimerData&) = delete;

  // Starts a timer, under the index given also when it runs already: it then gets the new callback, argument
  // and interval. Returns its index, or kNoTimer when the system has no timer left, there is no memory for
  // the entry, or the index is none of the table's.
  i32 start(u32 intervalMs, Callback callback, u32 argument, i32 index = kNewTimer) noexcept;

  // Nothing happens if there is no such timer.
  void stop(i32 index) noexcept;

  // For tests and listings.
  i32 slotCount() const noexcept { return slotCount_; }

 private:
  struct Entry;
  struct Tables;
  friend struct TimerProcedure;

  Entry* findOrMake(i32 index) noexcept;
  i32 freeSlot() noexcept;
  void kill(Entry& entry) noexcept;
  void remove(i32 index) noexcept;
  bool isSlot(i32 index) const noexcept { return index >= 0 && index < slotCount_; }
  Entry*& at(i32 slot) noexcept { return entries_[static_cast<std::size_t>(slot)]; }

  HeapBuffer<Entry*> entries_;
  i32 slotCount_ = 0;
  SCriticalSection section_;
  Tables* tables_ = nullptr;  // made with the first slots
};

extern CORVIX_API TimerData timerData;

}  // namespace corvix
