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

namespace {

using Listeners = std::vector<IBTransportable*, HeapAllocator<IBTransportable*>>;

}  // namespace

// The sentinel of the circle of entries.
struct ListenerList : HeapAllocated {
  ListenerEntry ends{&ends, &ends, nullptr, 0};
  std::atomic<u32> count{0};
  std::atomic<u32> version{0};  // counts the changes
  bool hasDuplicates = false;   // once true, true for good: it only costs the short cut
  bool isOrphaned = false;      // its sender is gone, the last delivery under way frees it
  u32 begun = 0;                // deliveries
  std::atomic<u32> ended{0};
  std::vector<Listeners, HeapAllocator<Listeners>> copies;  // the last is of the list as it is, if it is not empty

  ~ListenerList() { clear(); }

  bool isDelivering() const noexcept { return ended.load(std::memory_order_acquire) != begun; }

  // Copies that deliveries may still work through are kept.
  void changed() noexcept {
    if (!isDelivering()) copies.clear();
    version.fetch_add(1, std::memory_order_release);
  }

  void clear() noexcept {
    for (ListenerEntry* entry = ends.next; entry != &ends;) {
      ListenerEntry* next = entry->next;
      _sfree(entry);
      entry = next;
    }
    ends.next = ends.previous = &ends;
    count.store(0, std::memory_order_relaxed);
    changed();
  }

  // Each listener once, in order, without those of a sorted list.
  Listeners copyWithout(const Listeners& served) const {
    Listeners copy;
    copy.reserve(count.load(std::memory_order_relaxed));
    for (const ListenerEntry* entry = ends.next; entry != &ends; entry = entry->next) {
      if (std::binary_search(served.begin(), served.end(), entry->listener)) continue;
      if (hasDuplicates && std::find(copy.begin(), copy.end(), entry->listener) != copy.end()) continue;
      copy.push_back(entry->listener);
    }
    return copy;
  }

  const Listeners& copy() {
    const u32 now = version.load(std::memory_order_relaxed);
    if (copies.empty() || copiedVersion_ != now) {
      if (!isDelivering()) copies.clear();
      copies.push_back(copyWithout({}));
      copiedVersion_ = now;
    }
    return copies.back();
  }

 private:
  u32 copiedVersion_ = 0;
};

struct Delivery::Changed : HeapAllocated {
  Listeners served;  // sorted
  Listeners pending;
};

void Delivery::begin(BNotifySender& sender) {
  SCriticalSection::Lock lock(dataCSProc());
  ListenerList* const list = sender.list_.load(std::memory_order_relaxed);
  if (!list || !list->count.load(std::memory_order_relaxed)) return;
  const Listeners& copy = list->copy();
  first_ = at_ = copy.data();
  end_ = at_ + copy.size();
  version_ = &list->version;
  seenVersion_ = list->version.load(std::memory_order_relaxed);
  ++list->begun;
  list_ = list;
}

void Delivery::end() noexcept {
  delete changed_;
  const u32 ended = list_->ended.fetch_add(1, std::memory_order_acq_rel) + 1;
  if (list_->isOrphaned && ended == list_->begun) delete list_;
}

void Delivery::lookAgain() {
  SCriticalSection::Lock lock(dataCSProc());
  if (!changed_) changed_ = new Changed;
  Listeners& served = changed_->served;
  served.insert(served.end(), first_, at_);
  std::sort(served.begin(), served.end());
  changed_->pending = list_->copyWithout(served);
  seenVersion_ = version_->load(std::memory_order_relaxed);
  first_ = at_ = changed_->pending.data();
  end_ = at_ + changed_->pending.size();
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
  list->changed();
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
  list->changed();
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
