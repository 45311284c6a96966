// ListenerList: the listeners of one sender in the order in which they are told, and the deliveries under way.
//
// All of it runs under the lock of `dataCSProc`, but for the steps of a delivery that has seen no change: those follow
// `next` without it. Therefore `version` goes up before a change can be seen, and what such a delivery may stand on
// is taken out of the order at once but kept in memory until that delivery ends. Of the first few such deliveries no
// more is known than the version that they saw, and they end without a word. Only `add` allocates.
#pragma once

#include "core/baselib/heap/AddressIndex_p.h"
#include "core/baselib/objects/NotifySender.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace corvix {

struct ListenerList : HeapAllocated {
 public:
  ListenerList() noexcept;
  ~ListenerList();

  u32 count() const noexcept { return count_.load(std::memory_order_relaxed); }
  const std::atomic<u32>& version() const noexcept { return version_; }
  ListenerEntry* ends() noexcept { return &ends_; }

  // Nothing is changed when there is no memory.
  void add(IBTransportable* listener, i32 priority);
  void remove(IBTransportable* listener) noexcept;

  // A place that holds the version until 0 is stored there, by whom is known to stand on no entry any more; null when
  // there is none left.
  std::atomic<u32>* startWalk(u32 version) noexcept;

  // From `enter` to `leave` a delivery is known here; one with such a place may leave too. A list without a sender goes
  // with its last delivery.
  void enter(Delivery& delivery) noexcept;
  void leave(Delivery& delivery) noexcept;

  // The first listener that was not told yet, for a delivery during which the list has changed.
  IBTransportable* next(Delivery& delivery) noexcept;

  // The sender goes: deliveries end, and so does the list, at once or with the last of them, or with another one later
  // where that delivery ended without a word.
  void orphan() noexcept;

 private:
  struct Entry : ListenerEntry, HeapAllocated {
    Entry* previous = nullptr;  // of one that is kept: the one that was removed before it
    Entry* sameBucket = nullptr;
    Entry* repeats = nullptr;  // of the same listener and later in the order
    u32 addedAt = 0;
    i32 priority = 0;
    u32 toldBy = 0;  // a bit for each delivery that keeps marks; in a listener's first entry and in removed ones
  };
  struct Served : HeapAllocated {
    std::vector<IBTransportable*, HeapAllocator<IBTransportable*>> all;
  };
  using Levels = std::map<i32, Entry*, std::less<i32>, HeapAllocator<std::pair<const i32, Entry*>>>;

  static Entry* after(const Entry* entry) noexcept {
    return static_cast<Entry*>(entry->next.load(std::memory_order_relaxed));
  }
  static bool isRemoved(const Entry& entry) noexcept;
  static bool isBefore(const Entry& a, const Entry& b) noexcept;

  void change() noexcept;
  void renumber() noexcept;
  bool isWalked() const noexcept;
  void freeAllKept() noexcept;
  static void sweepOrphans() noexcept;

  // The order.
  Entry* placeFor(i32 priority) noexcept;
  void link(Entry* entry, Entry* before) noexcept;
  void unlink(Entry* entry) noexcept;

  Entry* firstOf(IBTransportable* listener) const noexcept;
  static void addRepeat(Entry* above, Entry* entry) noexcept;
  static Entry* melded(Entry* a, Entry* b) noexcept;
  static Entry* firstRepeat(Entry& entry) noexcept;

  // Deliveries.
  bool isNeeded(const Entry& removed) const noexcept;
  void freeKept(const Delivery& ended) noexcept;
  static bool isBlind(const Delivery& delivery) noexcept;
  bool isTold(const Delivery& delivery, const Entry& entry) const noexcept;
  void setTold(Delivery& delivery, const Entry& entry) noexcept;
  static void startServed(Delivery& delivery) noexcept;
  static void forgetServed(Delivery& delivery) noexcept;
  void startMarks(Delivery& delivery) noexcept;
  void endMarks(Delivery& delivery) noexcept;

  Entry ends_;
  std::atomic<u32> count_{0};  // in the order
  std::atomic<u32> version_;
  bool isOrphaned_ = false;
  Levels levels_;                                             // the last entry of every priority but the greatest
  AddressIndex<Entry, &ListenerEntry::listener> byListener_;  // the first of each listener, and removed ones
  Entry* kept_ = nullptr;                                     // removed, the latest first
  static constexpr int kWalkers = 4;
  std::atomic<u32> walkers_[kWalkers] = {};  // versions, 0 where no delivery is
  ListenerList* nextOrphan_ = nullptr;
  Delivery* oldest_ = nullptr;
  Delivery* newest_ = nullptr;
  u32 marksInUse_ = 0;
};

}  // namespace corvix
