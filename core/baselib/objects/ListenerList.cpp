#include "core/baselib/objects/ListenerList_p.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace corvix {

namespace {

// What `state` says of an entry; any other number is the version at which it was removed.
constexpr u32 kTellable = 0;
constexpr u32 kRepeat = 1;  // another entry of the listener comes first
constexpr u32 kFirstVersion = 2;
constexpr u32 kLastVersion = 1u << 30;  // the numbers begin anew once it is passed and nobody looks at them

constexpr u32 kFirstBuckets = 32;

u32 mixed(const void* address) noexcept {
  const u32 bits = static_cast<u32>(reinterpret_cast<std::uintptr_t>(address)) * 0x9E3779B1u;
  return bits ^ bits >> 15;
}

void setState(ListenerEntry& entry, u32 state) noexcept {
  if (entry.state.load(std::memory_order_relaxed) != state) entry.state.store(state, std::memory_order_release);
}

}  // namespace

bool ListenerList::isRemoved(const Entry& entry) noexcept {
  return entry.state.load(std::memory_order_relaxed) >= kFirstVersion;
}

// In the order of telling, which holds for removed entries too.
bool ListenerList::isBefore(const Entry& a, const Entry& b) noexcept {
  return a.priority != b.priority ? a.priority < b.priority : a.addedAt < b.addedAt;
}

ListenerList::ListenerList() noexcept : version_(kFirstVersion) {
  ends_.next.store(&ends_, std::memory_order_relaxed);
  ends_.previous = &ends_;
}

ListenerList::~ListenerList() {
  for (Entry* entry = after(&ends_); entry != &ends_;) delete std::exchange(entry, after(entry));
  while (kept_) delete std::exchange(kept_, kept_->previous);
}

void ListenerList::add(IBTransportable* listener, i32 priority) {
  std::unique_ptr<Entry> made(new Entry);
  Entry* const before = placeFor(priority);
  Entry* const last = ends_.previous;
  Entry* const entry = made.get();
  // What is the last entry of its priority, unless that is the greatest.
  if (before != last) {
    levels_.insert_or_assign(priority, entry);
  } else if (last != &ends_ && last->priority != priority) {
    levels_.insert_or_assign(last->priority, last);
  }
  static_cast<void>(made.release());
  change();
  entry->listener = listener;
  entry->priority = priority;
  entry->addedAt = version_.load(std::memory_order_relaxed);
  const Entry* const other = anyOf(listener);
  if (other) entry->toldBy = other->toldBy;
  enterBucket(entry);
  if (other) settleRepeats(listener);
  link(entry, before);
  // Those that are past it go back to it.
  for (Delivery* one = newest_; one; one = one->older_) {
    const bool isPast = one->keepsMarks_ && one->at_ != &ends_ && priority < static_cast<Entry*>(one->at_)->priority;
    if (isPast && !isBlind(*one) && !isTold(*one, *entry)) one->at_ = before;
  }
}

void ListenerList::remove(IBTransportable* listener) noexcept {
  Entry* const entry = firstOf(listener);
  if (!entry) return;
  change();
  for (Delivery* one = newest_; one; one = one->older_) {
    if (one->keepsMarks_ && one->at_ == entry) one->at_ = entry->previous;
  }
  unlink(entry);
  setState(*entry, version_.load(std::memory_order_relaxed));
  if (isNeeded(*entry)) {
    entry->previous = std::exchange(kept_, entry);
  } else {
    leaveBucket(entry);
    delete entry;
  }
  settleRepeats(listener);
}

void ListenerList::change() noexcept {
  if (!newest_ && version_.load(std::memory_order_relaxed) > kLastVersion) renumber();
  version_.store(version_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_release);
}

void ListenerList::renumber() noexcept {
  u32 version = kFirstVersion;
  for (Entry* entry = after(&ends_); entry != &ends_; entry = after(entry)) entry->addedAt = ++version;
  version_.store(version, std::memory_order_relaxed);
}

ListenerList::Entry* ListenerList::placeFor(i32 priority) noexcept {
  Entry* const last = ends_.previous;
  if (last == &ends_ || priority >= last->priority) return last;
  const auto above = levels_.upper_bound(priority);
  return above == levels_.begin() ? &ends_ : std::prev(above)->second;
}

void ListenerList::link(Entry* entry, Entry* before) noexcept {
  Entry* const behind = after(before);
  entry->previous = before;
  entry->next.store(behind, std::memory_order_relaxed);
  behind->previous = entry;
  before->next.store(entry, std::memory_order_release);
  count_.store(count() + 1, std::memory_order_relaxed);
}

// Its `next` stays: a delivery may be about to follow it.
void ListenerList::unlink(Entry* entry) noexcept {
  Entry* const before = entry->previous;
  Entry* const behind = after(entry);
  const bool leavesEqual = before != &ends_ && before->priority == entry->priority;
  if (behind == &ends_) {
    if (before != &ends_ && !leavesEqual) levels_.erase(before->priority);
  } else if (behind->priority != entry->priority) {
    if (leavesEqual) {
      levels_.find(entry->priority)->second = before;
    } else {
      levels_.erase(entry->priority);
    }
  }
  behind->previous = before;
  before->next.store(behind, std::memory_order_release);
  count_.store(count() - 1, std::memory_order_relaxed);
}

ListenerList::Entry*& ListenerList::bucketOf(IBTransportable* listener) const noexcept {
  return buckets_ ? buckets_[mixed(listener) & bucketMask_] : const_cast<Entry*&>(onlyBucket_);
}

ListenerList::Entry* ListenerList::anyOf(IBTransportable* listener) const noexcept {
  Entry* entry = bucketOf(listener);
  while (entry && entry->listener != listener) entry = entry->sameBucket;
  return entry;
}

ListenerList::Entry* ListenerList::firstOf(IBTransportable* listener) const noexcept {
  Entry* first = nullptr;
  for (Entry* entry = bucketOf(listener); entry; entry = entry->sameBucket) {
    if (entry->listener != listener || isRemoved(*entry)) continue;
    if (!first || isBefore(*entry, *first)) first = entry;
  }
  return first;
}

void ListenerList::enterBucket(Entry* entry) noexcept {
  if (++held_ > (buckets_ ? bucketMask_ : kFewEntries)) growBuckets();
  Entry*& bucket = bucketOf(entry->listener);
  entry->sameBucket = bucket;
  bucket = entry;
}

void ListenerList::leaveBucket(Entry* entry) noexcept {
  Entry** place = &bucketOf(entry->listener);
  while (*place != entry) place = &(*place)->sameBucket;
  *place = entry->sameBucket;
  --held_;
}

// Without memory for more there are fewer than there should be, until the next time.
void ListenerList::growBuckets() noexcept {
  const u32 oldCount = buckets_ ? bucketMask_ + 1 : 1;
  const u32 newCount = buckets_ ? oldCount * 2 : kFirstBuckets;
  HeapBuffer<Entry*> grown;
  if (!grown.tryAllocate(newCount)) return;
  std::fill_n(grown.get(), newCount, nullptr);
  for (u32 i = 0; i < oldCount; ++i) {
    for (Entry* entry = buckets_ ? buckets_[i] : onlyBucket_; entry;) {
      Entry*& bucket = grown[mixed(entry->listener) & (newCount - 1)];
      Entry* const next = std::exchange(entry->sameBucket, bucket);
      bucket = std::exchange(entry, next);
    }
  }
  onlyBucket_ = nullptr;
  buckets_ = std::move(grown);
  bucketMask_ = newCount - 1;
}

// A delivery passes over all entries of a listener but the first.
void ListenerList::settleRepeats(IBTransportable* listener) noexcept {
  Entry* const first = firstOf(listener);
  for (Entry* entry = bucketOf(listener); entry; entry = entry->sameBucket) {
    if (entry->listener == listener && !isRemoved(*entry)) setState(*entry, entry == first ? kTellable : kRepeat);
  }
}

void ListenerList::enter(Delivery& delivery) noexcept {
  delivery.older_ = newest_;
  (newest_ ? newest_->newer_ : oldest_) = &delivery;
  newest_ = &delivery;
}

void ListenerList::leave(Delivery& delivery) noexcept {
  endMarks(delivery);
  (delivery.older_ ? delivery.older_->newer_ : oldest_) = delivery.newer_;
  (delivery.newer_ ? delivery.newer_->older_ : newest_) = delivery.older_;
  if (isOrphaned_) {
    if (!newest_) delete this;
  } else {
    freeKept(delivery);
  }
}

void ListenerList::orphan() noexcept {
  change();
  isOrphaned_ = true;
  if (!newest_) delete this;
}

IBTransportable* ListenerList::next(Delivery& delivery) noexcept {
  if (isOrphaned_) return nullptr;
  if (!delivery.keepsMarks_) startMarks(delivery);
  for (Entry* entry = after(static_cast<Entry*>(delivery.at_)); entry != &ends_; entry = after(entry)) {
    if (isTold(delivery, *entry)) continue;
    setTold(delivery, *entry);
    delivery.at_ = entry;
    return entry->listener;
  }
  return nullptr;
}

// A removed entry is, as long as it tells anybody what was told to whom: a delivery without marks may stand on it or
// have passed it, the marks of others may be in no other entry of the listener.
bool ListenerList::isNeeded(const Entry& removed) const noexcept {
  const u32 removedAt = removed.state.load(std::memory_order_relaxed);
  for (const Delivery* one = newest_; one; one = one->older_) {
    if (!one->keepsMarks_ && one->seenVersion_ < removedAt && one->seenVersion_ >= removed.addedAt) return true;
  }
  if (removed.toldBy == 0) return false;
  for (const Entry* entry = bucketOf(removed.listener); entry; entry = entry->sameBucket) {
    if (entry != &removed && entry->listener == removed.listener) return false;
  }
  return true;
}

// Looks at what was removed while the delivery was under way.
void ListenerList::freeKept(const Delivery& ended) noexcept {
  for (Entry** place = &kept_; *place && (*place)->state.load(std::memory_order_relaxed) > ended.seenVersion_;) {
    Entry* const entry = *place;
    if (isNeeded(*entry)) {
      place = &entry->previous;
      continue;
    }
    *place = entry->previous;
    leaveBucket(entry);
    delete entry;
  }
}

// There was no mark left for it, nor memory: it goes on from its place, never back.
bool ListenerList::isBlind(const Delivery& delivery) noexcept { return !delivery.mark_ && !delivery.served_; }

bool ListenerList::isTold(const Delivery& delivery, const Entry& entry) const noexcept {
  if (delivery.mark_) return (entry.toldBy & delivery.mark_) != 0;
  const auto* const served = static_cast<const Served*>(delivery.served_);
  return served && std::find(served->all.begin(), served->all.end(), entry.listener) != served->all.end();
}

void ListenerList::setTold(Delivery& delivery, const Entry& told) noexcept {
  if (delivery.mark_) {
    for (Entry* entry = bucketOf(told.listener); entry; entry = entry->sameBucket) {
      if (entry->listener == told.listener) entry->toldBy |= delivery.mark_;
    }
  } else if (auto* const served = static_cast<Served*>(delivery.served_)) {
    try {
      served->all.push_back(told.listener);
    } catch (const std::bad_alloc&) {
      forgetServed(delivery);
    }
  }
}

void ListenerList::startServed(Delivery& delivery) noexcept {
  try {
    delivery.served_ = new Served;
  } catch (const std::bad_alloc&) {
  }
}

void ListenerList::forgetServed(Delivery& delivery) noexcept {
  delete static_cast<Served*>(std::exchange(delivery.served_, nullptr));
}

// From now on it says who was told, where so far its place did.
void ListenerList::startMarks(Delivery& delivery) noexcept {
  delivery.keepsMarks_ = true;
  const u32 unused = ~marksInUse_;
  delivery.mark_ = unused & (0u - unused);
  marksInUse_ |= delivery.mark_;
  if (!delivery.mark_) startServed(delivery);
  if (delivery.at_ == &ends_) return;
  const Entry& last = *static_cast<Entry*>(delivery.at_);
  const auto hadItsTurn = [&](const Entry& entry) {
    return entry.addedAt <= delivery.seenVersion_ && !isBefore(last, entry);
  };
  Entry* entry = after(&ends_);
  for (; entry != &ends_ && !isBefore(last, *entry); entry = after(entry)) {
    if (hadItsTurn(*entry)) setTold(delivery, *entry);
  }
  delivery.at_ = entry->previous;
  for (entry = kept_; entry && entry->state.load(std::memory_order_relaxed) > delivery.seenVersion_;
       entry = entry->previous) {
    if (hadItsTurn(*entry)) setTold(delivery, *entry);
  }
  if (!isBlind(delivery)) delivery.at_ = &ends_;
}

void ListenerList::endMarks(Delivery& delivery) noexcept {
  forgetServed(delivery);
  const u32 mark = delivery.mark_;
  if (!mark) return;
  marksInUse_ &= ~mark;
  for (Entry* entry = after(&ends_); entry != &ends_; entry = after(entry)) entry->toldBy &= ~mark;
  for (Entry* entry = kept_; entry; entry = entry->previous) entry->toldBy &= ~mark;
}

}  // namespace corvix
