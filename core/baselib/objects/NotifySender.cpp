#include "core/baselib/objects/NotifySender.h"

#include "core/baselib/objects/ListenerList_p.h"
#include "core/baselib/system/NativeSection_p.h"

#include <new>
#include <utility>

namespace corvix {

// Lives until the process ends: objects that go late still tell their listeners.
SCriticalSection& dataCSProc() noexcept {
  alignas(SCriticalSection) static unsigned char storage[sizeof(SCriticalSection)];
  static SCriticalSection* const made = new (storage) SCriticalSection;
  return *made;
}

namespace {

class DataLock {
 public:
  DataLock() noexcept : section_(native(dataCSProc())) { enterNative(section_); }
  ~DataLock() { leaveNative(section_); }
  DataLock(const DataLock&) = delete;
  DataLock& operator=(const DataLock&) = delete;

 private:
  CRITICAL_SECTION* const section_;
};

}  // namespace

void Delivery::begin(BNotifySender& sender) noexcept {
  const DataLock lock;
  ListenerList* const list = sender.list_.load(std::memory_order_relaxed);
  if (!list || list->count() == 0) return;
  list_ = list;
  version_ = &list->version();
  seenVersion_ = version_->load(std::memory_order_relaxed);
  at_ = list->ends();
  walker_ = list->startWalk(seenVersion_);
  if (!walker_) list->enter(*this);
}

void Delivery::end() noexcept {
  const DataLock lock;
  list_->leave(*this);
}

ListenerEntry* Delivery::lookAgain(ListenerEntry* told) noexcept {
  const DataLock lock;
  if (walker_) {
    list_->enter(*this);
    std::exchange(walker_, nullptr)->store(0, std::memory_order_relaxed);
  }
  if (!keepsMarks_) at_ = told;
  own_.listener = list_->next(*this);
  own_.next.store(&own_, std::memory_order_relaxed);
  return &own_;
}

BNotifySender::~BNotifySender() {
  if (!list_.load(std::memory_order_relaxed)) return;
  const DataLock lock;
  // A static sender may be asked again after its end: it then has no listeners.
  list_.exchange(nullptr, std::memory_order_relaxed)->orphan();
}

void BNotifySender::addListener(IBTransportable* listener, i32 priority) {
  if (!listener) return;
  const DataLock lock;
  ListenerList* list = list_.load(std::memory_order_relaxed);
  if (!list) {
    list = new ListenerList;
    list_.store(list, std::memory_order_release);
  }
  list->add(listener, priority);
}

void BNotifySender::removeListener(IBTransportable* listener) noexcept {
  const DataLock lock;
  if (ListenerList* const list = list_.load(std::memory_order_relaxed)) list->remove(listener);
}

u32 BNotifySender::listenerCount() const noexcept {
  const ListenerList* const list = list_.load(std::memory_order_acquire);
  return list ? list->count() : 0;
}

int BNotifySender::broadcast(void* argument1, void* argument2, Deliver deliver) {
  if (!deliver) return notify::kGoOn;
  return broadcastTo<IBTransportable>(
      *this, [=](IBTransportable& listener) { return deliver(argument1, argument2, &listener); });
}

}  // namespace corvix
