// Named global data against hash maps keyed by the same joined text, behind the same kind of lock.
#include "bench/Bench.h"
#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/system/CriticalSection.h"

#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>
#include <random>
#include <string_view>
#include <unordered_map>

namespace corvix::bench {
namespace {

struct Item {
  void* value;
  BGlobalData::Destructor destructor;
};

// A look-up with a key that is at hand, not joined.
struct ViewHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return boost::hash<std::string_view>()(text); }
};

class Measurement {
 public:
  explicit Measurement(std::size_t entries) : owner_(IBSmartObject::classInfo()) {
    for (std::size_t i = 0; i < entries; ++i) names_.push_back("Item" + std::to_string(i));
    for (const std::string& name : names_) {
      keys_.push_back(owner_.text() + name);
      map_[keys_.back()] = {this, nullptr};
      flat_[keys_.back()] = {this, nullptr};
      BGlobalData::setItem(owner_, name.c_str(), this, nullptr);
    }
    for (std::size_t i = 0; i < entries; ++i) order_.push_back(i);
    std::shuffle(order_.begin(), order_.end(), std::mt19937(7));
  }
  ~Measurement() { BGlobalData::destroyAll(); }

  void run(Report& report) {
    const std::string entries = ", " + std::to_string(names_.size()) + " entries";
    const auto get = each([this](std::size_t i) { return BGlobalData::getItem(owner_, names_[i].c_str()); });
    const auto set = each([this](std::size_t i) {
      BGlobalData::setItem(owner_, names_[i].c_str(), this, nullptr);
      return nullptr;
    });
    const auto mapGet = each([this](std::size_t i) {
      SCriticalSection::Lock lock(section_);
      const auto found = map_.find(owner_.text() + names_[i]);
      return found == map_.end() ? nullptr : found->second.value;
    });
    const auto mapSet = each([this](std::size_t i) {
      SCriticalSection::Lock lock(section_);
      map_[owner_.text() + names_[i]] = {this, nullptr};
      return nullptr;
    });
    const auto flatGet = each([this](std::size_t i) {
      SCriticalSection::Lock lock(section_);
      const auto found = flat_.find(std::string_view(keys_[i]));
      return found == flat_.end() ? nullptr : found->second.value;
    });
    const auto flatSet = each([this](std::size_t i) {
      SCriticalSection::Lock lock(section_);
      flat_.find(std::string_view(keys_[i]))->second = {this, nullptr};
      return nullptr;
    });
    report.compare("get" + entries, "std::unordered_map, key joined", 0.8, get, mapGet);
    report.compare("get" + entries, "boost::unordered_flat_map, view key", 1.1, get, flatGet);
    report.compare("set" + entries, "std::unordered_map, key joined", 0.8, set, mapSet);
    report.compare("set" + entries, "boost::unordered_flat_map, view key", 1.1, set, flatSet);
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
  SCriticalSection section_;
  std::vector<std::string> names_;
  std::vector<std::string> keys_;
  std::vector<std::size_t> order_;
  std::unordered_map<std::string, Item> map_;
  boost::unordered_flat_map<std::string, Item, ViewHash, std::equal_to<>> flat_;
};

void measureGlobalData(Report& report) {
  for (std::size_t entries : {20, 1000, 100000}) Measurement(entries).run(report);
}

const Area area{"global data", measureGlobalData};

}  // namespace
}  // namespace corvix::bench
