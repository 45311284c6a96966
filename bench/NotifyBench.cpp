// Telling listeners against Boost.Signals2 with its own mutex; each slot makes the same virtual call.
#include "bench/Bench.h"
#include "core/baselib/objects/SmartObject.h"

#include <boost/signals2/signal.hpp>

#include <memory>

namespace corvix::bench {
namespace {

class Listener final : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Listener, 0x20000001, 0x5F0A, 0x77, 0x1, BSmartObject, IDestroyListener)
 public:
  int onDestroy(IBRTTISupport*) override { return static_cast<int>(++told_ & 0); }

 private:
  u32 told_ = 0;
};

void measureNotify(Report& report) {
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
