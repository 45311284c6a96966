// BNotifySender: a list of listeners in ascending priority that stays right while listeners change it.
//
// The sender holds no references: a listener removes itself before it goes. Changes and every step of a
// delivery run under the lock of `dataCSProc`, handlers run outside it. [any thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

#include <atomic>

namespace corvix {

class SCriticalSection;

// The lock of all listener lists. Recursive.
CORVIX_API SCriticalSection& dataCSProc() noexcept;

// What a handler answers, and what a delivery makes of the answers. Any other number counts as GoOn.
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

  bool hasListeners() const noexcept { return list_.load(std::memory_order_acquire) && listenerCount() != 0; }
  u32 listenerCount() const noexcept;

  // Tells every listener once, also those that are added meanwhile, not those that are removed before their
  // turn. Returns kStop if a handler did, else kTaken if any did, else kGoOn.
  int broadcast(void* argument1, void* argument2, Deliver deliver);

 private:
  friend class Delivery;
  std::atomic<ListenerList*> list_{nullptr};
};

// One delivery under way. It works through a copy of the list, which the list keeps as long as it does not
// change, and looks at the list again, under the lock, only when it has changed; what is told to whom is the
// same as if it looked before every step.
class Delivery {
 public:
  explicit Delivery(BNotifySender& sender) {
    if (sender.list_.load(std::memory_order_acquire)) begin(sender);
  }
  ~Delivery() {
    if (list_) end();
  }
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  // The listener whose turn it is, or null at the end.
  IBTransportable* next() {
    if (!list_) return nullptr;
    if (version_->load(std::memory_order_acquire) != seenVersion_) lookAgain();
    return at_ == end_ ? nullptr : *at_++;
  }

 private:
  struct Changed;

  CORVIX_API void begin(BNotifySender& sender);
  CORVIX_API void end() noexcept;
  CORVIX_API void lookAgain();

  ListenerList* list_ = nullptr;
  const std::atomic<u32>* version_ = nullptr;
  u32 seenVersion_ = 0;
  IBTransportable* const* first_ = nullptr;
  IBTransportable* const* at_ = nullptr;
  IBTransportable* const* end_ = nullptr;
  Changed* changed_ = nullptr;  // once the list has changed: who was told before, and a list of our own
};

// `broadcast` for a callable that takes the listener as a Listener&.
template <class Listener, class Call>
int broadcastTo(BNotifySender& sender, Call call) {
  int result = notify::kGoOn;
  Delivery delivery(sender);
  while (IBTransportable* listener = delivery.next()) {
    const int answer = call(*static_cast<Listener*>(listener));
    if (answer == notify::kStop) return notify::kStop;
    if (answer == notify::kTaken) result = notify::kTaken;
  }
  return result;
}

}  // namespace corvix
