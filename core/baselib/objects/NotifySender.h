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

class CORVIX_API BNotifySender : public virtual IBRTTISupport {
  CORVIX_IDENTITY(BNotifySender, 0x58F2A3C1, 0x4D0E96B7, 0xA2C4517E, 0x91B83D06)

 public:
  // Tells one listener; the two arguments are those of `broadcast`.
  using Deliver = int (*)(void* argument1, void* argument2, IBTransportable* listener);

  BNotifySender() noexcept = default;
  BNotifySender(const BNotifySender&) = delete;
  BNotifySender& operator=(const BNotifySender&) = delete;

  // Calls no listener. A delivery that is under way on this sender ends after the current handler.
  ~BNotifySender();

  // Behind every listener of the same or a smaller priority. A listener may be added twice; it is still told
  // once a delivery. Which interface a listener must have is said by the owner of the list.
  void addListener(IBTransportable* listener, i32 priority = 0);

  // Takes out the first entry that holds the listener; nothing happens if there is none.
  void removeListener(IBTransportable* listener) noexcept;

  bool hasListeners() const noexcept { return listenerCount() != 0; }
  u32 listenerCount() const noexcept;

  // Tells every listener once, also those that are added meanwhile, not those that are removed before their
  // turn. Returns kStop if a handler did, else kTaken if any did, else kGoOn.
  int broadcast(void* argument1, void* argument2, Deliver deliver);

 private:
  std::atomic<ListenerList*> list_{nullptr};
};

// `broadcast` for a callable that takes the listener as a Listener&.
template <class Listener, class Call>
int broadcastTo(BNotifySender& sender, Call call) {
  return sender.broadcast(&call, nullptr, [](void* callable, void*, IBTransportable* listener) {
    return (*static_cast<Call*>(callable))(*static_cast<Listener*>(listener));
  });
}

}  // namespace corvix
