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

constinit ListenerList* orphans = nullptr;  // whose deliveries were not over when they were looked at last

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

bool ListenerList::isWalked() const noexcept {
  return newest_ || std::any_of(std::begin(walkers_), std::end(walkers_),
                                [](const std::atomic<u32>& one) { return one.load(std::memory_order_acquire) != 0; });
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
  if (const Entry* const other = byListener_.find(listener)) entry->toldBy = other->toldBy;
  if (Entry* const first = firstOf(listener)) {
    const bool isFirst = isBefore(*entry, *first);
    if (isFirst) byListener_.replace(first, entry);
    addRepeat(isFirst ? entry : first, isFirst ? first : entry);
  } else {
    byListener_.enter(entry);
  }
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
  if (Entry* const repeat = firstRepeat(*entry)) {
    repeat->toldBy = entry->toldBy;
    byListener_.replace(entry, repeat);
    setState(*repeat, kTellable);
  } else {
    byListener_.leave(entry);
  }
  if (isNeeded(*entry)) {
    entry->previous = std::exchange(kept_, entry);
    byListener_.enter(entry);
  } else {
    delete entry;
    if (kept_ && !isWalked()) freeAllKept();
  }
}

void ListenerList::change() noexcept {
  if (version_.load(std::memory_order_relaxed) > kLastVersion && !isWalked()) renumber();
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

ListenerList::Entry* ListenerList::firstOf(IBTransportable* listener) const noexcept {
  Entry* entry = byListener_.firstIn(listener);
  while (entry && (entry->listener != listener || isRemoved(*entry))) entry = entry->sameBucket;
  return entry;
}

// A delivery passes over all entries of a listener but the first. The others hang below it in a pairing heap, none
// before the one above it, `sameBucket` from one to the next of those below the same.
void ListenerList::addRepeat(Entry* above, Entry* entry) noexcept {
  entry->sameBucket = std::exchange(above->repeats, entry);
  setState(*entry, kRepeat);
}

ListenerList::Entry* ListenerList::melded(Entry* a, Entry* b) noexcept {
  if (!a || !b) return a ? a : b;
  if (isBefore(*b, *a)) std::swap(a, b);
  b->sameBucket = std::exchange(a->repeats, b);
  return a;
}

// Those below the entry, in pairs and then together, under the first of them.
ListenerList::Entry* ListenerList::firstRepeat(Entry& entry) noexcept {
  Entry* pairs = nullptr;
  for (Entry* one = std::exchange(entry.repeats, nullptr); one;) {
    Entry* const two = one->sameBucket;
    Entry* const behind = two ? two->sameBucket : nullptr;
    Entry* const pair = melded(one, two);
    pair->sameBucket = std::exchange(pairs, pair);
    one = behind;
  }
  Entry* first = nullptr;
  while (pairs) {
    Entry* const next = pairs->sameBucket;
    first = melded(first, std::exchange(pairs, next));
  }
  return first;
}

void ListenerList::enter(Delivery& delivery) noexcept {
  delivery.older_ = newest_;
  (newest_ ? newest_->newer_ : oldest_) = &delivery;
  newest_ = &delivery;
}

std::atomic<u32>* ListenerList::startWalk(u32 version) noexcept {
  for (std::atomic<u32>& one : walkers_) {
    if (one.load(std::memory_order_relaxed) != 0) continue;
    one.store(version, std::memory_order_relaxed);
    return &one;
  }
  return nullptr;
}

void ListenerList::leave(Delivery& delivery) noexcept {
  if (delivery.walker_) {
    delivery.walker_->store(0, std::memory_order_relaxed);
  } else {
    endMarks(delivery);
    (delivery.older_ ? delivery.older_->newer_ : oldest_) = delivery.newer_;
    (delivery.newer_ ? delivery.newer_->older_ : newest_) = delivery.older_;
  }
  if (isOrphaned_) {
    sweepOrphans();
  } else {
    freeKept(delivery);
  }
}

void ListenerList::orphan() noexcept {
  change();
  isOrphaned_ = true;
  nextOrphan_ = std::exchange(orphans, this);
  sweepOrphans();
}

// A delivery on another thread may have ended without a word since the last time.
void ListenerList::sweepOrphans() noexcept {
  for (ListenerList** place = &orphans; *place;) {
    ListenerList* const one = *place;
    if (one->isWalked()) {
      place = &one->nextOrphan_;
    } else {
      *place = one->nextOrphan_;
      delete one;
    }
  }
}

IBTransportable* ListenerList::next(Delivery& delivery) noexcept {
  if (isOrphaned_) return nullptr;
  if (!delivery.keepsMarks_) startMarks(delivery);
  for (Entry* entry = after(static_cast<Entry*>(delivery.at_)); entry != &ends_; entry = after(entry)) {
    if (entry->state.load(std::memory_order_relaxed) == kRepeat || isTold(delivery, *entry)) continue;
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
  for (const std::atomic<u32>& walker : walkers_) {
    const u32 seen = walker.load(std::memory_order_acquire);
    if (seen != 0 && seen < removedAt && seen >= removed.addedAt) return true;
  }
  for (const Delivery* one = newest_; one; one = one->older_) {
    if (!one->keepsMarks_ && one->seenVersion_ < removedAt && one->seenVersion_ >= removed.addedAt) return true;
  }
  if (removed.toldBy == 0) return false;
  for (const Entry* entry = byListener_.firstIn(removed.listener); entry; entry = entry->sameBucket) {
    if (entry != &removed && entry->listener == removed.listener) return false;
  }
  return true;
}

void ListenerList::freeAllKept() noexcept {
  while (Entry* const entry = kept_) {
    kept_ = entry->previous;
    byListener_.leave(entry);
    delete entry;
  }
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
    byListener_.leave(entry);
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
    for (Entry* entry = byListener_.firstIn(told.listener); entry; entry = entry->sameBucket) {
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
