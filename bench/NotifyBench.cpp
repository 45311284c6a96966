// Telling listeners against Boost.Signals2 with its own mutex, and against a plain loop; each makes the same virtual
// call.
#include "bench/Bench.h"
#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/system/CriticalSection.h"

#include <boost/signals2/signal.hpp>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <vector>

namespace corvix::bench {
namespace {

class Listener final : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Listener, 0x20000001, 0x5F0A, 0x77, 0x1, BSmartObject, IDestroyListener)
 public:
  // Nobody who tells knows whom: without this the compiler would call the only class there is directly.
  [[gnu::noipa]] int onDestroy(IBRTTISupport*) override { return static_cast<int>(++told_ & 0); }

 private:
  u32 told_ = 0;
};

using Listeners = std::vector<std::unique_ptr<Listener>>;

Listeners makeListeners(std::size_t count) {
  Listeners made;
  for (std::size_t i = 0; i < count; ++i) made.push_back(std::make_unique<Listener>());
  return made;
}

double nsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

// Nanoseconds for each listener to come and to go, in no order: the smallest of some rounds.
double comingAndGoingNs(std::size_t count) {
  const Listeners listeners = makeListeners(count);
  std::vector<IDestroyListener*> leaving;
  for (const auto& one : listeners) leaving.push_back(one.get());
  std::shuffle(leaving.begin(), leaving.end(), std::mt19937(11));
  double best = 1e300;
  for (int round = 0; round < 9; ++round) {
    BNotifySender sender;
    const auto start = std::chrono::steady_clock::now();
    for (const auto& one : listeners) sender.addListener(static_cast<IDestroyListener*>(one.get()));
    for (IDestroyListener* one : leaving) sender.removeListener(one);
    best = std::min(best, nsSince(start) / static_cast<double>(count));
  }
  return best;
}

// Every listener takes itself out when it is told: an operation is all of them coming, being told and gone.
void measureLeaving(Report& report) {
  constexpr std::size_t count = 1000;
  const Listeners listeners = makeListeners(count);
  report.compare(
      "1000 listeners that leave while told", "Boost.Signals2", 1,
      [&](std::uint64_t n) {
        for (; n > 0; --n) {
          BNotifySender sender;
          for (const auto& one : listeners) sender.addListener(static_cast<IDestroyListener*>(one.get()));
          int result = broadcastTo<IDestroyListener>(sender, [&](IDestroyListener& listener) {
            sender.removeListener(&listener);
            return listener.onDestroy(nullptr);
          });
          keep(result);
        }
      },
      [&](std::uint64_t n) {
        for (; n > 0; --n) {
          boost::signals2::signal<int(IBRTTISupport*)> signal;
          std::vector<boost::signals2::connection> connections(count);
          for (std::size_t i = 0; i < count; ++i) {
            connections[i] = signal.connect([&, i](IBRTTISupport* object) {
              connections[i].disconnect();
              return listeners[i]->onDestroy(object);
            });
          }
          auto result = signal(nullptr);
          keep(result);
        }
      });
}

// The least that anything which tells a list under a lock has to do.
void measureAgainstLoop(Report& report) {
  const Listeners listeners = makeListeners(64);
  BNotifySender sender;
  std::vector<IDestroyListener*> plain;
  for (const auto& one : listeners) {
    sender.addListener(static_cast<IDestroyListener*>(one.get()));
    plain.push_back(one.get());
  }
  report.compare(
      "broadcast to 64", "a lock, a loop", 1.4,
      [&](std::uint64_t n) {
        for (; n > 0; --n) {
          int result = broadcastTo<IDestroyListener>(
              sender, [](IDestroyListener& listener) { return listener.onDestroy(nullptr); });
          keep(result);
        }
      },
      [&](std::uint64_t n) {
        for (; n > 0; --n) {
          const SCriticalSection::Lock lock(dataCSProc());
          int result = 0;
          for (IDestroyListener* one : plain) result |= one->onDestroy(nullptr);
          keep(result);
        }
      });
}

void measureNotify(Report& report) {
  report.add("a listener comes and goes, of 8000", "of 500", 2, comingAndGoingNs(8000), comingAndGoingNs(500));
  measureLeaving(report);
  measureAgainstLoop(report);
  for (std::size_t count : {1u, 8u, 64u, 512u}) {
    std::vector<std::unique_ptr<Listener>> listeners;
    BNotifySender sender;
    boost::signals2::signal<int(IBRTTISupport*)> signal;
    for (std::size_t i = 0; i < count; ++i) {
      listeners.push_back(std::make_unique<Listener>());
      IDestroyListener* const listener = listeners.back().get();
      sender.addListener(listener);
      signal.connect([listener](IBRTTISupport* object) { return listener->onDestroy(object); });
    }
    IBRTTISupport* object = nullptr;
    const double wanted = count == 1 ? 0.4 : count == 8 ? 0.25 : 0.15;
    report.compare(
        "broadcast to " + std::to_string(count), "Boost.Signals2", wanted,
        [&](std::uint64_t n) {
          for (std::uint64_t i = 0; i < n; ++i) {
            int result = broadcastTo<IDestroyListener>(
                sender, [object](IDestroyListener& listener) { return listener.onDestroy(object); });
            keep(result);
          }
        },
        [&](std::uint64_t n) {
          for (std::uint64_t i = 0; i < n; ++i) {
            auto result = signal(object);
            keep(result);
          }
        });
  }
}

const Area area{"notification", measureNotify};

}  // namespace
}  // namespace corvix::bench
