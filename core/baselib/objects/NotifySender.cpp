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

class Delivery;

// The sentinel of the circle of entries.
struct ListenerList : HeapAllocated {
  ListenerEntry ends{&ends, &ends, nullptr, 0};
  std::atomic<u32> count{0};
  bool hasDuplicates = false;      // once true, true for good: it only costs the short cut
  std::atomic<u32> version{0};     // counts the changes
  Delivery* deliveries = nullptr;  // under way, the newest first

  ~ListenerList() {
    for (ListenerEntry* entry = ends.next; entry != &ends;) {
      ListenerEntry* next = entry->next;
      _sfree(entry);
      entry = next;
    }
  }
};

// One delivery under way. It works through a copy of the list and looks at the list again, under the lock,
// only when the list has changed; what is told to whom is the same as if it looked before every step.
class Delivery {
 public:
  Delivery(ListenerList& list) : list_(&list), next_(list.deliveries) {
    list.deliveries = this;
    version_ = list.version.load(std::memory_order_relaxed);
    if (list.count > kInPlace) copy_.resize(list.count);
    pending_ = copy_.empty() ? inPlace_ : copy_.data();
    for (ListenerEntry* entry = list.ends.next; entry != &list.ends; entry = entry->next) {
      if (!list.hasDuplicates || !isPending(entry->listener)) pending_[pendingCount_++] = entry->listener;
    }
  }

  ~Delivery() {
    SCriticalSection::Lock lock(dataCSProc());
    if (!list_) return;
    Delivery** link = &list_->deliveries;
    while (*link != this) link = &(*link)->next_;
    *link = next_;
  }

  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  Delivery* next() const noexcept { return next_; }
  void senderGone() noexcept { list_ = nullptr; }

  // The listener whose turn it is, or null at the end.
  IBTransportable* take() {
    if (!list_) return nullptr;
    if (list_->version.load(std::memory_order_acquire) != version_) lookAgain();
    return position_ == pendingCount_ ? nullptr : pending_[position_++];
  }

 private:
  static constexpr u32 kInPlace = 32;

  bool isPending(IBTransportable* listener) const noexcept {
    return std::find(pending_, pending_ + pendingCount_, listener) != pending_ + pendingCount_;
  }

  void lookAgain() {
    SCriticalSection::Lock lock(dataCSProc());
    served_.insert(served_.end(), pending_, pending_ + position_);
    std::sort(served_.begin(), served_.end());
    version_ = list_->version.load(std::memory_order_relaxed);
    Listeners fresh;
    fresh.reserve(list_->count);
    for (ListenerEntry* entry = list_->ends.next; entry != &list_->ends; entry = entry->next) {
      IBTransportable* const listener = entry->listener;
      if (std::binary_search(served_.begin(), served_.end(), listener)) continue;
      if (list_->hasDuplicates && std::find(fresh.begin(), fresh.end(), listener) != fresh.end()) continue;
      fresh.push_back(listener);
    }
    copy_ = std::move(fresh);
    pending_ = copy_.data();
    pendingCount_ = static_cast<u32>(copy_.size());
    position_ = 0;
  }

  ListenerList* list_;
  Delivery* next_;
  u32 version_;
  u32 position_ = 0;
  u32 pendingCount_ = 0;
  IBTransportable** pending_;
  IBTransportable* inPlace_[kInPlace];
  Listeners copy_;
  Listeners served_;  // those told before the last look, sorted
};

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
  for (Delivery* delivery = list->deliveries; delivery; delivery = delivery->next()) delivery->senderGone();
  // A static sender may be asked again after its end: it then has no listeners.
  list_.store(nullptr, std::memory_order_relaxed);
  delete list;
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
  if (!list_.load(std::memory_order_acquire)) return notify::kGoOn;
  int result = notify::kGoOn;
  SCriticalSection::Lock lock(dataCSProc());
  ListenerList* const list = list_.load(std::memory_order_relaxed);
  if (!list || !list->count) return notify::kGoOn;
  Delivery delivery(*list);
  lock.release();
  while (IBTransportable* listener = delivery.take()) {
    const int answer = deliver(argument1, argument2, listener);
    if (answer == notify::kStop) return notify::kStop;
    if (answer == notify::kTaken) result = notify::kTaken;
  }
  return result;
}

}  // namespace corvix
