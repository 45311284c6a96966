// What each element costs in a table, list or tree of ten thousand, against each in one of a hundred; a row between
// says where it begins. Nothing here may grow faster than the work.
#include "bench/Bench.h"
#include "core/baselib/memory/FixedMemoryPool.h"
#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/NotifySender.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/threads/TimerTable.h"
#include "core/xml/XmlNode.h"
#include "shell/Plugin.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <numeric>
#include <random>

#include <windows.h>

namespace corvix::bench {
namespace {

constexpr std::size_t kFew = 100;
constexpr std::size_t kMore = 1000;
constexpr std::size_t kMany = 10000;

// `batch(size)` makes work whose operation is to fill and empty something of that many elements.
template <class Batch>
void grow(Report& report, const std::string& name, Batch batch, double wanted = 2) {
  const Work few = batch(kFew), more = batch(kMore), many = batch(kMany);
  report.compare(name + ", each of 1000", "each of 100", 0, more, few, kMore, kFew);
  report.compare(name + ", each of 10000", "each of 100", wanted, many, few, kMany, kFew);
}

template <class Operation>
Work repeat(Operation operation) {
  return [operation](std::uint64_t count) mutable {
    for (std::uint64_t i = 0; i < count; ++i) operation();
  };
}

enum class Order { OldestFirst, NewestFirst, Random };
constexpr std::pair<Order, const char*> kOrders[] = {
    {Order::OldestFirst, "oldest first"}, {Order::NewestFirst, "newest first"}, {Order::Random, "in no order"}};

std::vector<std::size_t> places(Order order, std::size_t count) {
  std::vector<std::size_t> all(count);
  std::iota(all.begin(), all.end(), 0);
  if (order == Order::NewestFirst) std::reverse(all.begin(), all.end());
  if (order == Order::Random) std::shuffle(all.begin(), all.end(), std::mt19937(5));
  return all;
}

class Listener final : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Listener, 0x5E0A19C4, 0xB7D26F83, 0x1C94E05A, 0x83F7BD21, BSmartObject, IDestroyListener)
 public:
  int onDestroy(IBRTTISupport*) override { return 0; }
};

void measureListeners(Report& report) {
  static std::vector<std::unique_ptr<Listener>> listeners(kMany);
  for (auto& listener : listeners) listener = std::make_unique<Listener>();
  for (const auto& [order, name] : kOrders) {
    grow(report, std::string("listeners added, removed ") + name, [order = order](std::size_t size) {
      return repeat([gone = places(order, size), size] {
        BNotifySender sender;
        for (std::size_t i = 0; i < size; ++i) sender.addListener(static_cast<IDestroyListener*>(listeners[i].get()));
        for (const std::size_t at : gone) sender.removeListener(static_cast<IDestroyListener*>(listeners[at].get()));
      });
    });
  }
  grow(report, "entries of one listener, added, removed", [](std::size_t size) {
    return repeat([size] {
      BNotifySender sender;
      IDestroyListener* const listener = listeners.front().get();
      for (std::size_t i = 0; i < size; ++i) sender.addListener(listener, static_cast<i32>(i * 7 % 5));
      for (std::size_t i = 0; i < size; ++i) sender.removeListener(listener);
    });
  });
  listeners.clear();
}

IBSmartObject* makeNothing() { return nullptr; }

// The rows of one module's factory, each asked for once.
void measureFactoryRows(Report& report) {
  static std::vector<std::wstring> names;
  for (std::size_t i = 0; i < kMany; ++i) names.push_back(L"Grown.Row" + std::to_wstring(i));
  static FactoryRow rows[kMany];
  for (std::size_t i = 0; i < kMany; ++i) rows[i] = {names[i].c_str(), makeNothing};
  static TableFactory many(rows);
  static TableFactory more(reinterpret_cast<const FactoryRow(&)[kMore]>(rows));
  static TableFactory few(reinterpret_cast<const FactoryRow(&)[kFew]>(rows));
  grow(report, "rows of one factory", [](std::size_t size) {
    BClassFactory& factory = size == kMany ? many : size == kMore ? more : few;
    return repeat([&factory, size] {
      for (std::size_t i = 0; i < size; ++i) {
        IBSmartObject* made = factory.createObject(names[i].c_str(), IDestroyListener::classInfo());
        keep(made);
      }
    });
  });
}

void ignoreTick(i32, u32) {}

class RunningTimers {
 public:
  explicit RunningTimers(std::size_t count) {
    while (indices_.size() < count) indices_.push_back(timerData.start(3600000, ignoreTick, 0));
  }
  ~RunningTimers() {
    for (const i32 timer : indices_) timerData.stop(timer);
  }
  RunningTimers(const RunningTimers&) = delete;
  RunningTimers& operator=(const RunningTimers&) = delete;

 private:
  std::vector<i32> indices_;
};

// A tick as a message loop hands it on, in rounds.
std::vector<double> ticksNs() {
  const i32 ticking = timerData.start(1, ignoreTick, 0);
  MSG tick{};
  while (GetMessageW(&tick, nullptr, WM_TIMER, WM_TIMER) <= 0) {
  }
  std::vector<double> rounds(101);
  for (double& round : rounds) {
    constexpr int kTicks = 10000;
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kTicks; ++i) DispatchMessageW(&tick);
    round = std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / kTicks;
  }
  timerData.stop(ticking);
  return rounds;
}

void measureTimers(Report& report) {
  constexpr std::size_t kBatch = 20;
  std::vector<double> amongFew;
  for (const std::size_t size : {kFew, kMore, kMany}) {
    // For both sides: the system's own calls take longer the more there are.
    const RunningTimers running(size);
    report.compare("timers started, stopped, among " + std::to_string(size), "SetTimer, KillTimer, among as many", 1.2,
                   repeat([] { const RunningTimers started(kBatch); }), repeat([] {
                     UINT_PTR started[kBatch];
                     for (UINT_PTR& timer : started) timer = SetTimer(nullptr, 0, 3600000, nullptr);
                     for (const UINT_PTR timer : started) KillTimer(nullptr, timer);
                   }),
                   kBatch, kBatch);
    if (size == kFew) amongFew = ticksNs();
    if (size == kMany) report.add("a tick among 10000 timers", "among 100", 2, ticksNs(), amongFew);
  }
}

void measureGlobalData(Report& report) {
  static std::vector<std::string> names;
  for (std::size_t i = 0; i < kMany; ++i) names.push_back("Grown" + std::to_string(i));
  const stype_info& owner = IDestroyListener::classInfo();
  for (const std::string& name : names) BGlobalData::setItem(owner, name.c_str(), nullptr, nullptr);
  grow(report, "global data, set and got", [&owner](std::size_t size) {
    return repeat([&owner, size] {
      for (std::size_t i = 0; i < size; ++i) {
        BGlobalData::setItem(owner, names[i].c_str(), &names, nullptr);
        void* value = BGlobalData::getItem(owner, names[i].c_str());
        keep(value);
        BGlobalData::setItem(owner, names[i].c_str(), nullptr, nullptr);
      }
    });
  });
}

void measureSettings(Report& report, IBSettings& settings) {
  static std::vector<std::wstring> names;
  for (std::size_t i = 0; i < kMany; ++i) names.push_back(L"Grown" + std::to_wstring(i));
  for (const std::size_t size : {kFew, kMore, kMany}) {
    for (std::size_t i = 0; i < size; ++i)
      settings.setValue((L"Bench of " + std::to_wstring(size)).c_str(), names[i].c_str(), 0);
  }
  grow(report, "settings of a group, set and got", [&settings](std::size_t size) {
    return repeat([&settings, size, group = L"Bench of " + std::to_wstring(size), round = 0]() mutable {
      ++round;
      for (std::size_t i = 0; i < size; ++i) {
        settings.setValue(group.c_str(), names[i].c_str(), round);
        Variant value;
        settings.getValue(group.c_str(), names[i].c_str(), value);
        keep(value);
      }
    });
  });
}

void measureNodes(Report& report) {
  for (const auto& [first, name] : {std::pair(true, "first"), {false, "last"}}) {
    grow(report, std::string("children of a node, the ") + name + " removed", [isFirst = first](std::size_t size) {
      return repeat([isFirst, size] {
        const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"Root");
        for (std::size_t i = 0; i < size; ++i)
          root->appendChild(make<XMLNodeNode>(root.get(), XmlNodeType::Element, L"Child").get());
        while (root->childCount() > 0) root->removeChild(isFirst ? 0 : root->childCount() - 1)->release();
      });
    });
  }
}

void measurePools(Report& report) {
  for (const auto& [order, name] : kOrders) {
    grow(report, std::string("pools made, gone ") + name, [order = order](std::size_t size) {
      return repeat([gone = places(order, size), size] {
        std::vector<Ref<BFixedMemoryPool>> pools;
        for (std::size_t i = 0; i < size; ++i) pools.push_back(make<BFixedMemoryPool>(16));
        for (const std::size_t at : gone) pools[at].reset();
      });
    });
  }
}

// Entries of one name stay registered: each operation takes a name of its own.
void measureInterfaces(Report& report, IPluginManager& manager) {
  static int name = 0;
  grow(report, "interfaces of one name, orders falling", [&manager](std::size_t size) {
    return repeat([&manager, size] {
      const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
      const auto plugin = make<XMLNodeNode>(root.get(), XmlNodeType::Element, L"Plugin");
      root->appendChild(plugin.get());
      const std::wstring interfaceName = L"Grown." + std::to_wstring(name++);
      for (std::size_t i = 0; i < size; ++i) {
        const auto element = make<XMLNodeNode>(plugin.get(), XmlNodeType::Element, L"Interface");
        const auto add = [&](const wchar_t* attribute, const wchar_t* value) {
          element->appendChild(make<XMLNodeParam>(element.get(), XmlNodeType::Attribute, attribute, value).get());
        };
        add(L"Name", interfaceName.c_str());
        add(L"GUID", L"1, 2, 3, 4");
        add(L"Order", std::to_wstring(size - i).c_str());
        plugin->appendChild(element.get());
      }
      manager.registerDescriptor(GetModuleHandleW(nullptr), root.get());
      const auto found = Ref<IBCollection>::adopt(manager.findByName(interfaceName.c_str()));
      auto* first = found->item(0);
      keep(first);
    });
  });
}

// The modules stay too: their numbers go on. The system's own calls for a path are no part of it.
void measureModules(Report& report, IPluginManager& manager) {
  u32 known = 0;
  const auto addUpTo = [&](u32 count) {
    for (; known < count; ++known) {
      const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
      const auto plugin = make<XMLNodeNode>(root.get(), XmlNodeType::Element, L"Plugin");
      root->appendChild(plugin.get());
      const std::wstring identifier = std::to_wstring(known) + L", 2, 3, 5";
      plugin->appendChild(make<XMLNodeParam>(plugin.get(), XmlNodeType::Attribute, L"GUID", identifier.c_str()).get());
      manager.registerDescriptor(GetModuleHandleW(nullptr), root.get());
    }
  };
  const auto look = [&manager](u32 count) {
    return repeat([&manager, at = 0u, count]() mutable {
      IPluginModule* found = manager.findModule(PlainIdentifier({at, 2, 3, 5}));
      keep(found);
      at = (at + 7) % count;
    });
  };
  addUpTo(kMany);
  report.compare("findModule, any of 10000", "the first 100", 2, look(kMany), look(kFew));
}

void measureGrowth(Report& report) {
  IShell& shell = *IShell::getInstance();
  measureListeners(report);
  measureGlobalData(report);
  measureSettings(report, *shell.settings());
  measureNodes(report);
  measurePools(report);
  measureFactoryRows(report);
  measureTimers(report);
  measureInterfaces(report, *shell.pluginManager());
  measureModules(report, *shell.pluginManager());
}

const Area area{"grows", measureGrowth};

}  // namespace
}  // namespace corvix::bench
