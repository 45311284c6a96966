#include "core/baselib/objects/NotifySender.h"

#include "core/baselib/system/CriticalSection.h"

#include <algorithm>
#include <new>
#include <vector>

namespace corvix {

struct ListenerEntry {
  ListenerEntry* next;
  ListenerEntry* previous;
  IBTransportable* listener;
  i32 priority;
};

// The sentinel of the circle of entries.
struct ListenerList : HeapAllocated {
  ListenerEntry ends{&ends, &ends, nullptr, 0};
  std::atomic<u32> count{0};
  std::atomic<u32> version{0};  // counts the changes
  bool hasDuplicates = false;   // once true, true for good: it only costs the short cut
  bool isOrphaned = false;      // its sender is gone, the last delivery under way frees it
  u32 begun = 0;                // deliveries
  std::atomic<u32> ended{0};

  ~ListenerList() { clear(); }

  void clear() noexcept {
    for (ListenerEntry* entry = ends.next; entry != &ends;) {
      ListenerEntry* next = entry->next;
      _sfree(entry);
      entry = next;
    }
    ends.next = ends.previous = &ends;
    count.store(0, std::memory_order_relaxed);
    version.fetch_add(1, std::memory_order_release);
  }
};

struct Delivery::Pending : HeapAllocated {
  using Listeners = std::vector<IBTransportable*, HeapAllocator<IBTransportable*>>;
  Listeners listeners;
  Listeners served;  // sorted
};

void Delivery::begin(BNotifySender& sender) {
  SCriticalSection::Lock lock(dataCSProc());
  ListenerList* const list = sender.list_.load(std::memory_order_relaxed);
  const u32 count = list ? list->count.load(std::memory_order_relaxed) : 0;
  if (!count) return;
  at_ = inPlace_;
  if (count > kInPlace) {
    more_ = new Pending;
    more_->listeners.resize(count);
    at_ = more_->listeners.data();
  }
  end_ = at_;
  for (ListenerEntry* entry = list->ends.next; entry != &list->ends; entry = entry->next) {
    if (!list->hasDuplicates || std::find(at_, end_, entry->listener) == end_) *end_++ = entry->listener;
  }
  version_ = &list->version;
  seenVersion_ = list->version.load(std::memory_order_relaxed);
  ++list->begun;
  list_ = list;
}

void Delivery::end() noexcept {
  delete more_;
  const u32 ended = list_->ended.fetch_add(1, std::memory_order_acq_rel) + 1;
  if (list_->isOrphaned && ended == list_->begun) delete list_;
}

void Delivery::lookAgain() {
  SCriticalSection::Lock lock(dataCSProc());
  if (!more_) more_ = new Pending;
  Pending::Listeners& served = more_->served;
  IBTransportable** const first = more_->listeners.empty() ? inPlace_ : more_->listeners.data();
  served.insert(served.end(), first, at_);
  std::sort(served.begin(), served.end());
  seenVersion_ = version_->load(std::memory_order_relaxed);
  Pending::Listeners fresh;
  fresh.reserve(list_->count.load(std::memory_order_relaxed) + 1);  // never empty: its place tells where we are
  for (ListenerEntry* entry = list_->ends.next; entry != &list_->ends; entry = entry->next) {
    IBTransportable* const listener = entry->listener;
    if (std::binary_search(served.begin(), served.end(), listener)) continue;
    if (list_->hasDuplicates && std::find(fresh.begin(), fresh.end(), listener) != fresh.end()) continue;
    fresh.push_back(listener);
  }
  const std::size_t count = fresh.size();
  fresh.resize(count + 1);
  more_->listeners = std::move(fresh);
  at_ = more_->listeners.data();
  end_ = at_ + count;
}

// Lives until the process ends: objects that go late still tell their listeners.
SCriticalSection& dataCSProc() noexcept {
  alignas(SCriticalSection) static unsigned char storage[sizeof(SCriticalSection)];
  static SCriticalSection* const made = new (storage) SCriticalSection;
  return *made;
}

BNotifySender::~BNotifySender() {
  ListenerList* const list = list_.load(std::memory_order_relaxed);
  if (!list) return;
  SCriticalSection::Lock lock(dataCSProc());
  // A static sender may be asked again after its end: it then has no listeners.
  list_.store(nullptr, std::memory_order_relaxed);
  list->clear();
  list->isOrphaned = true;
  if (list->ended.load(std::memory_order_acquire) == list->begun) delete list;
}

void BNotifySender::addListener(IBTransportable* listener, i32 priority) {
  SCriticalSection::Lock lock(dataCSProc());
  ListenerList* list = list_.load(std::memory_order_relaxed);
  auto* const entry = static_cast<ListenerEntry*>(heapAllocate(sizeof(ListenerEntry)));
  if (!list) {
    list = new ListenerList;
    list_.store(list, std::memory_order_release);
  }
  ListenerEntry* behind = &list->ends;
  for (ListenerEntry* other = list->ends.next; other != &list->ends; other = other->next) {
    if (other->listener == listener) list->hasDuplicates = true;
    if (behind == &list->ends && other->priority > priority) behind = other;
  }
  *entry = {behind, behind->previous, listener, priority};
  behind->previous->next = entry;
  behind->previous = entry;
  ++list->count;
  list->version.fetch_add(1, std::memory_order_release);
}

void BNotifySender::removeListener(IBTransportable* listener) noexcept {
  SCriticalSection::Lock lock(dataCSProc());
  ListenerList* const list = list_.load(std::memory_order_relaxed);
  if (!list) return;
  ListenerEntry* entry = list->ends.next;
  while (entry != &list->ends && entry->listener != listener) entry = entry->next;
  if (entry == &list->ends) return;
  entry->previous->next = entry->next;
  entry->next->previous = entry->previous;
  --list->count;
  list->version.fetch_add(1, std::memory_order_release);
  _sfree(entry);
}

u32 BNotifySender::listenerCount() const noexcept {
  const ListenerList* const list = list_.load(std::memory_order_acquire);
  return list ? list->count.load(std::memory_order_relaxed) : 0;
}

int BNotifySender::broadcast(void* argument1, void* argument2, Deliver deliver) {
  return broadcastTo<IBTransportable>(
      *this, [=](IBTransportable& listener) { return deliver(argument1, argument2, &listener); });
}

}  // namespace corvix
