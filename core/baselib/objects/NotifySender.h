// BNotifySender: a list of listeners in ascending priority that stays right while listeners change it.
//
// The sender holds no references: a listener removes itself before it goes. Changes, the beginning of a delivery and
// its steps once the list has changed run under the lock of `dataCSProc`, handlers run outside it. [any thread]
#pragma once

#include "core/baselib/objects/Transportable.h"
#include "core/baselib/system/ForeignCall.h"

#include <atomic>

namespace corvix {

class SCriticalSection;

// The lock of all listener lists. Recursive.
CORVIX_API SCriticalSection& dataCSProc() noexcept;

// What a handler answers, and what a delivery makes of the answers. Any other number counts as GoOn, and so does a
// handler that throws: see core/baselib/system/ForeignCall.h.
namespace notify {
constexpr int kGoOn = 0;
constexpr int kStop = 1;   // no further listener is told
constexpr int kTaken = 2;  // the event is marked as taken, delivery goes on
}  // namespace notify

struct ListenerList;
class Delivery;

class CORVIX_API BNotifySender : public virtual IBRTTISupport {
  CORVIX_IDENTITY(BNotifySender, 0x58F2A3C1, 0x4D0E96B7, 0xA2C4517E, 0x91B83D06, IBRTTISupport)

 public:
  // Tells one listener; the two arguments are those of `broadcast`.
  using Deliver = int (*)(void* argument1, void* argument2, IBTransportable* listener);

  BNotifySender() noexcept = default;
  BNotifySender(const BNotifySender&) = delete;
  BNotifySender& operator=(const BNotifySender&) = delete;

  // Calls no listener. A delivery that is under way on this sender, on this thread, ends after the current
  // handler.
  ~BNotifySender();

  // Behind every listener of the same or a smaller priority. A listener may be added twice; it is still told
  // once a delivery. Which interface a listener must have is said by the owner of the list.
  void addListener(IBTransportable* listener, i32 priority = 0);

  // Takes out the first entry that holds the listener; nothing happens if there is none.
  void removeListener(IBTransportable* listener) noexcept;

  bool hasListeners() const noexcept { return hadListeners() && listenerCount() != 0; }
  u32 listenerCount() const noexcept;

  // Ever; a delivery without any needs nothing else.
  bool hadListeners() const noexcept { return list_.load(std::memory_order_acquire) != nullptr; }

  // Tells every listener once, also those that are added meanwhile, not those that are removed before their
  // turn. Returns kStop if a handler did, else kTaken if any did, else kGoOn.
  int broadcast(void* argument1, void* argument2, Deliver deliver);

 private:
  friend class Delivery;
  std::atomic<ListenerList*> list_{nullptr};
};

// One listener in the order; what is public of it lets a delivery go on without a call.
struct ListenerEntry {
  std::atomic<ListenerEntry*> next{nullptr};
  std::atomic<u32> state{0};  // 0: to be told
  IBTransportable* listener = nullptr;
};

// One delivery under way, on the stack of who delivers. It allocates nothing. As long as the list does not change it
// follows the entries and ends without a lock; once it has, every step is made under the lock and marks who was told.
class Delivery {
 public:
  explicit Delivery(BNotifySender& sender) {
    if (sender.hadListeners()) begin(sender);
  }
  ~Delivery() {
    if (!list_) return;
    if (walker_ && isUnchanged()) {
      walker_->store(0, std::memory_order_release);
    } else {
      end();
    }
  }
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  // Where `next` begins; null when there is nobody to tell.
  ListenerEntry* start() const noexcept { return at_; }

  // The entry whose turn it is after the one that was told last; at the end one without a listener.
  ListenerEntry* next(ListenerEntry* told) noexcept {
    ListenerEntry* const entry = told->next.load(std::memory_order_acquire);
    if (isUnchanged() && entry->state.load(std::memory_order_acquire) == 0) return entry;
    return lookFurther(told);
  }

 private:
  friend struct ListenerList;

  CORVIX_API void begin(BNotifySender& sender) noexcept;
  CORVIX_API void end() noexcept;
  CORVIX_API ListenerEntry* lookAgain(ListenerEntry* told) noexcept;

  bool isUnchanged() const noexcept { return version_->load(std::memory_order_acquire) == seenVersion_; }

  // The same when the next entry is none to be told. Apart: what nearly every step does is a few instructions.
  ListenerEntry* lookFurther(ListenerEntry* told) noexcept {
    ListenerEntry* entry = told;
    do {
      entry = entry->next.load(std::memory_order_acquire);
      if (!isUnchanged()) return lookAgain(told);
    } while (entry->state.load(std::memory_order_acquire) != 0);
    return entry;
  }

  ListenerList* list_ = nullptr;
  const std::atomic<u32>* version_ = nullptr;
  std::atomic<u32>* walker_ = nullptr;  // tells the list that the delivery is under way; null: the list knows it
  u32 seenVersion_ = 0;
  ListenerEntry* at_ = nullptr;  // where it starts; told last, once it keeps marks

  Delivery* older_ = nullptr;  // on the same sender
  Delivery* newer_ = nullptr;
  bool keepsMarks_ = false;
  ListenerEntry own_;       // stands for the one told last, once it keeps marks: that one may be gone
  u32 mark_ = 0;            // its bit, if there was one left
  void* served_ = nullptr;  // else who was told
};

// `broadcast` for a callable that takes the listener as a Listener&. `place` is for the log, when a handler throws.
template <class Listener, class Call>
int broadcastTo(BNotifySender& sender, Call call, const wchar_t* place = Listener::classNameW()) {
  int result = notify::kGoOn;
  if (!sender.hadListeners()) return result;
  Delivery delivery(sender);
  ListenerEntry* at = delivery.start();
  if (!at) return result;
  while (IBTransportable* const listener = (at = delivery.next(at))->listener) {
    const int answer = callForeign(codeOf(listener), place, [&] { return call(*static_cast<Listener*>(listener)); });
    if (answer == notify::kStop) return notify::kStop;
    if (answer == notify::kTaken) result = notify::kTaken;
  }
  return result;
}

}  // namespace corvix
