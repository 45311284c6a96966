// ListenerList: the listeners of one sender in the order in which they are told, and the deliveries under way.
//
// All of it runs under the lock of `dataCSProc`, but for the steps of a delivery that has seen no change: those follow
// `next` without it. Therefore `version` goes up before a change can be seen, and what such a delivery may stand on
// is taken out of the order at once but kept in memory until that delivery ends. Only `add` allocates.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
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

  // From `enter` to `leave` a delivery is known here. `leave` deletes a list without a sender with its last delivery.
  void enter(Delivery& delivery) noexcept;
  void leave(Delivery& delivery) noexcept;

  // The first listener that was not told yet, for a delivery during which the list has changed.
  IBTransportable* next(Delivery& delivery) noexcept;

  // The sender goes: deliveries end, and so does the list, at once or with the last of them.
  void orphan() noexcept;

 private:
  struct Entry : ListenerEntry, HeapAllocated {
    Entry* previous = nullptr;  // of one that is kept: the one that was removed before it
    Entry* sameBucket = nullptr;
    u32 addedAt = 0;
    i32 priority = 0;
    u32 toldBy = 0;  // a bit for each delivery that keeps marks; the same in all entries of a listener
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

  // The order.
  Entry* placeFor(i32 priority) noexcept;
  void link(Entry* entry, Entry* before) noexcept;
  void unlink(Entry* entry) noexcept;

  // The entries of each listener, removed ones included as long as they are kept.
  Entry*& bucketOf(IBTransportable* listener) const noexcept;
  Entry* anyOf(IBTransportable* listener) const noexcept;
  Entry* firstOf(IBTransportable* listener) const noexcept;
  void enterBucket(Entry* entry) noexcept;
  void leaveBucket(Entry* entry) noexcept;
  void growBuckets() noexcept;
  void settleRepeats(IBTransportable* listener) noexcept;

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

  static constexpr u32 kFewEntries = 8;  // that one bucket is enough for

  Entry ends_;
  std::atomic<u32> count_{0};  // in the order
  u32 held_ = 0;               // in the buckets
  std::atomic<u32> version_;
  bool isOrphaned_ = false;
  Levels levels_;  // the last entry of every priority but the greatest
  Entry* onlyBucket_ = nullptr;
  HeapBuffer<Entry*> buckets_;
  u32 bucketMask_ = 0;
  Entry* kept_ = nullptr;  // removed, the latest first
  Delivery* oldest_ = nullptr;
  Delivery* newest_ = nullptr;
  u32 marksInUse_ = 0;
};

}  // namespace corvix
