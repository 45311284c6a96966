// Named global data against hash maps behind a lock of the system's. Both sides get what a caller has at hand, the four
// words of an identifier and a name that ends with a zero.
#include "bench/Bench.h"
#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/SmartObject.h"

#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>
#include <random>
#include <string_view>
#include <unordered_map>

#include <windows.h>

namespace corvix::bench {
namespace {

struct Item {
  void* value;
  BGlobalData::Destructor destructor;
};

struct KeyView {
  ClassWords owner;
  std::string_view name;
};

struct Key {
  ClassWords owner;
  std::string name;
  operator KeyView() const noexcept { return {owner, name}; }
};

struct KeyHash {
  using is_transparent = void;
  std::size_t operator()(const KeyView& key) const noexcept {
    const u32 owner = key.owner.word1 ^ key.owner.word2 * 3 ^ key.owner.word3 * 5 ^ key.owner.word4 * 7;
    return std::hash<std::string_view>()(key.name) ^ owner;
  }
};

struct SameKey {
  using is_transparent = void;
  bool operator()(const KeyView& a, const KeyView& b) const noexcept { return a.owner == b.owner && a.name == b.name; }
};

class BareLock {
 public:
  explicit BareLock(CRITICAL_SECTION& section) : section_(section) { EnterCriticalSection(&section); }
  ~BareLock() { LeaveCriticalSection(&section_); }
  BareLock(const BareLock&) = delete;
  BareLock& operator=(const BareLock&) = delete;

 private:
  CRITICAL_SECTION& section_;
};

class Measurement {
 public:
  explicit Measurement(std::size_t entries) : owner_(IBSmartObject::classInfo()) {
    InitializeCriticalSectionAndSpinCount(&section_, 4000);
    for (std::size_t i = 0; i < entries; ++i) names_.push_back("Item" + std::to_string(i));
    for (const std::string& name : names_) {
      map_[Key{owner_.words(), name}] = {this, nullptr};
      flat_[Key{owner_.words(), name}] = {this, nullptr};
      BGlobalData::setItem(owner_, name.c_str(), this, nullptr);
    }
    for (std::size_t i = 0; i < entries; ++i) order_.push_back(i);
    std::shuffle(order_.begin(), order_.end(), std::mt19937(7));
  }
  ~Measurement() {
    for (const std::string& name : names_) BGlobalData::setItem(owner_, name.c_str(), nullptr, nullptr);
    DeleteCriticalSection(&section_);
  }

  void run(Report& report) {
    const std::string entries = ", " + std::to_string(names_.size()) + " entries";
    const auto get = each([this](std::size_t i) { return BGlobalData::getItem(owner_, names_[i].c_str()); });
    const auto set = each([this](std::size_t i) {
      BGlobalData::setItem(owner_, names_[i].c_str(), this, nullptr);
      return nullptr;
    });
    const auto getFrom = [this](auto& map) {
      return each([this, &map](std::size_t i) {
        const BareLock lock(section_);
        const auto found = map.find(KeyView{owner_.words(), names_[i].c_str()});
        return found == map.end() ? nullptr : found->second.value;
      });
    };
    const auto setIn = [this](auto& map) {
      return each([this, &map](std::size_t i) {
        const BareLock lock(section_);
        map.find(KeyView{owner_.words(), names_[i].c_str()})->second = {this, nullptr};
        return nullptr;
      });
    };
    report.compare("get" + entries, "std::unordered_map by string_view", 1.0, get, getFrom(map_));
    report.compare("get" + entries, "boost::unordered_flat_map by string_view", 0, get, getFrom(flat_));
    report.compare("set" + entries, "std::unordered_map by string_view", 0, set, setIn(map_));
    report.compare("set" + entries, "boost::unordered_flat_map by string_view", 0, set, setIn(flat_));
  }

 private:
  template <class Call>
  Work each(Call call) {
    return [this, call](std::uint64_t count) {
      std::size_t at = 0;
      for (std::uint64_t i = 0; i < count; ++i) {
        void* value = call(order_[at]);
        keep(value);
        if (++at == order_.size()) at = 0;
      }
    };
  }

  const stype_info& owner_;
  CRITICAL_SECTION section_;
  std::vector<std::string> names_;
  std::vector<std::size_t> order_;
  std::unordered_map<Key, Item, KeyHash, SameKey> map_;
  boost::unordered_flat_map<Key, Item, KeyHash, SameKey> flat_;
};

void measureGlobalData(Report& report) {
  for (std::size_t entries : {20, 1000, 100000}) Measurement(entries).run(report);
}

const Area area{"global data", measureGlobalData};

}  // namespace
}  // namespace corvix::bench
