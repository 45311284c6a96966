// The settings store against maps by string_view behind a lock of the system's; taking settings in and saving them
// against nothing but the registry calls that do the same.
#include "bench/Bench.h"
#include "core/xml/XmlNode.h"
#include "shell/Plugin.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <variant>

#include <windows.h>

namespace corvix::bench {
namespace {

constexpr wchar_t kGroup[] = L"Quality of the benchmarks";
constexpr int kSettings = 10;  // of a descriptor

using Value = std::variant<std::monostate, std::wstring, double, i32, bool>;

struct ViewHash {
  using is_transparent = void;
  std::size_t operator()(std::wstring_view text) const noexcept { return std::hash<std::wstring_view>()(text); }
};
template <class Mapped>
using ByName = std::unordered_map<std::wstring, Mapped, ViewHash, std::equal_to<>>;

class NestedMaps {
 public:
  NestedMaps() { InitializeCriticalSectionAndSpinCount(&section_, 4000); }
  ~NestedMaps() { DeleteCriticalSection(&section_); }
  NestedMaps(const NestedMaps&) = delete;
  NestedMaps& operator=(const NestedMaps&) = delete;

  bool get(std::wstring_view group, std::wstring_view item, Value& value) {
    EnterCriticalSection(&section_);
    const Value* const found = find(group, item);
    if (found) value = *found;
    LeaveCriticalSection(&section_);
    return found;
  }
  void set(std::wstring_view group, std::wstring_view item, const Value& value) {
    EnterCriticalSection(&section_);
    if (Value* const found = find(group, item)) {
      *found = value;
    } else {
      groups_[std::wstring(group)][std::wstring(item)] = value;
    }
    LeaveCriticalSection(&section_);
  }

 private:
  Value* find(std::wstring_view group, std::wstring_view item) {
    const auto found = groups_.find(group);
    if (found == groups_.end()) return nullptr;
    const auto inGroup = found->second.find(item);
    return inGroup == found->second.end() ? nullptr : &inGroup->second;
  }

  CRITICAL_SECTION section_;
  ByName<ByName<Value>> groups_;
};

template <class Operation>
Work repeat(Operation operation) {
  return [operation](std::uint64_t count) mutable {
    for (std::uint64_t i = 0; i < count; ++i) operation(i);
  };
}

// Items that nobody else has heard of, so that it does not matter what ran before.
void measureStore(Report& report, IBSettings& settings) {
  NestedMaps maps;
  const auto number = [](int i) { return L"A number, the " + std::to_wstring(i) + L"th"; };
  for (int i = 0; i < 20; ++i) {
    settings.setValue(kGroup, number(i).c_str(), i);
    maps.set(kGroup, number(i), Value(i));
  }
  settings.setValue(kGroup, L"A text", L"Bookmarks and page");
  maps.set(kGroup, L"A text", Value(L"Bookmarks and page"));
  const std::wstring one = number(7);
  const wchar_t* integer = one.c_str();
  const wchar_t* text = L"A text";
  const wchar_t* group = kGroup;
  keep(integer), keep(text), keep(group);
  const char* const peer = "nested std::unordered_maps by string_view";
  for (const auto& [name, item] : {std::pair("get an integer", integer), {"get a text", text}}) {
    const wchar_t* const key = item;
    report.compare(name, peer, 1.0, repeat([&settings, group, key, value = Variant()](std::uint64_t) mutable {
                     settings.getValue(group, key, value);
                     keep(value);
                   }),
                   repeat([&maps, group, key, value = Value()](std::uint64_t) mutable {
                     maps.get(group, key, value);
                     keep(value);
                   }));
  }
  report.compare("set an integer", peer, 1.5,
                 repeat([&](std::uint64_t i) { settings.setValue(group, integer, Variant(static_cast<i32>(i & 1))); }),
                 repeat([&](std::uint64_t i) { maps.set(group, integer, Value(static_cast<i32>(i & 1))); }));
}

std::wstring programKey() {
  wchar_t program[MAX_PATH];
  std::wstring key(program, GetModuleFileNameW(nullptr, program, MAX_PATH));
  std::replace(key.begin(), key.end(), L'\\', L'/');
  return L"Software\\Marrowby\\Corvix\\" + key;
}

std::wstring groupKey(const std::wstring& group) { return programKey() + L"\\Options\\" + group; }

using Attributes = std::vector<std::pair<const wchar_t*, std::wstring>>;

Attributes attributesOf(const std::wstring& group, int item) {
  return {{L"Group", group},
          {L"Item", L"Item" + std::to_wstring(item)},
          {L"Type", L"bool"},
          {L"Values", L""},
          {L"Data", L"true"},
          {L"Visible", L"check"},
          {L"path", L"General Options\\Navigation Pane"},
          {L"comment", L"Set default Navigation Pane behavior on start-up"}};
}

Ref<XMLNode> descriptorOf(const std::wstring& group) {
  const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
  const auto plugin = make<XMLNodeNode>(root.get(), XmlNodeType::Element, L"Plugin");
  root->appendChild(plugin.get());
  for (int i = 0; i < kSettings; ++i) {
    const auto element = make<XMLNodeNode>(plugin.get(), XmlNodeType::Element, L"Setting");
    for (const auto& [name, value] : attributesOf(group, i))
      element->appendChild(make<XMLNodeParam>(element.get(), XmlNodeType::Attribute, name, value.c_str()).get());
    plugin->appendChild(element.get());
  }
  return root;
}

void setBare(HKEY key, const wchar_t* name, std::wstring_view text) {
  RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                 static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

void readBare(const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
    throw std::runtime_error("a setting has no key");
  for (const wchar_t* name : {L"Data", L"DefaultValue", L"Type", L"Values"}) {
    wchar_t text[256];
    DWORD type = 0;
    DWORD size = sizeof text;
    RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    keep(text);
  }
  RegCloseKey(key);
}

// What a first run does: looks for the key, makes it, writes the default and every attribute.
void createBare(const std::wstring& path, const Attributes& attributes) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS)
    throw std::runtime_error("a key that should be new is there");
  RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
  setBare(key, L"DefaultValue", L"true");
  for (const auto& [name, value] : attributes) setBare(key, name, value);
  RegCloseKey(key);
}

// Both sides build the same tree of nodes: ours takes it in.
void measureFirstRun(Report& report, IPluginManager& manager) {
  const HMODULE program = GetModuleHandleW(nullptr);
  report.compare("take in 10 settings, the first run", "bare registry calls", 1.1,
                 repeat([&, round = 0](std::uint64_t) mutable {
                   const Ref<XMLNode> root = descriptorOf(L"BenchFirst" + std::to_wstring(round++));
                   manager.registerDescriptor(program, root.get());
                 }),
                 repeat([&, round = 0](std::uint64_t) mutable {
                   const std::wstring group = L"BenchPeer" + std::to_wstring(round++);
                   const Ref<XMLNode> root = descriptorOf(group);
                   keep(*root);
                   for (int i = 0; i < kSettings; ++i)
                     createBare(groupKey(group) + L"\\Item" + std::to_wstring(i), attributesOf(group, i));
                 }),
                 kSettings, kSettings);
}

std::vector<std::wstring> pathsOf(const IPluginManager& manager) {
  std::vector<std::wstring> paths;
  for (i32 m = 0; m < manager.moduleCount(); ++m) {
    const IPluginModule& module = *manager.moduleAt(m);
    for (i32 i = 0; i < module.settingCount(); ++i)
      paths.push_back(groupKey(module.settingAttribute(i, L"Group")) + L"\\" + module.settingAttribute(i, L"Item"));
  }
  return paths;
}

// The same two values of each key again, whatever they are.
void measureSaving(Report& report, IPluginManager& manager) {
  struct Saved {
    std::wstring path, data, standard;
  };
  std::vector<Saved> all;
  manager.saveSettings();
  for (const std::wstring& path : pathsOf(manager)) {
    wchar_t data[256] = L"", standard[256] = L"";
    DWORD size = sizeof data;
    RegGetValueW(HKEY_CURRENT_USER, path.c_str(), L"Data", RRF_RT_REG_SZ, nullptr, data, &size);
    size = sizeof standard;
    RegGetValueW(HKEY_CURRENT_USER, path.c_str(), L"DefaultValue", RRF_RT_REG_SZ, nullptr, standard, &size);
    all.push_back({path, data, standard});
  }
  const double count = static_cast<double>(all.size());
  const Work ours = repeat([&](std::uint64_t) { manager.saveSettings(); });
  report.compare("save a setting, nothing changed", "bare calls that write the same values", 1.2, ours,
                 repeat([&](std::uint64_t) {
                   for (const Saved& one : all) {
                     HKEY key = nullptr;
                     if (RegOpenKeyExW(HKEY_CURRENT_USER, one.path.c_str(), 0, 0x2001F, &key) != ERROR_SUCCESS)
                       continue;
                     setBare(key, L"Data", one.data);
                     setBare(key, L"DefaultValue", one.standard);
                     RegCloseKey(key);
                   }
                 }),
                 count, count);
  report.compare("save a setting, nothing changed", "opening and closing its key", 0, ours, repeat([&](std::uint64_t) {
                   for (const Saved& one : all) {
                     HKEY key = nullptr;
                     RegOpenKeyExW(HKEY_CURRENT_USER, one.path.c_str(), 0, 0x2001F, &key);
                     RegCloseKey(key);
                   }
                 }),
                 count, count);
}

void measureLaterRun(Report& report, IPluginManager& manager) {
  const HMODULE program = GetModuleHandleW(nullptr);
  const std::wstring group = L"BenchLater";
  const Ref<XMLNode> root = descriptorOf(group);
  manager.registerDescriptor(program, root.get());
  std::vector<std::wstring> paths;
  for (int i = 0; i < kSettings; ++i) paths.push_back(groupKey(group) + L"\\Item" + std::to_wstring(i));
  report.compare("take in 10 settings, a later run", "bare registry calls", 1.1,
                 repeat([&](std::uint64_t) { manager.registerDescriptor(program, root.get()); }),
                 repeat([&](std::uint64_t) {
                   for (const std::wstring& path : paths) readBare(path);
                 }),
                 kSettings, kSettings);
}

void measureSettings(Report& report) {
  IShell& shell = *IShell::getInstance();
  RegDeleteTreeW(HKEY_CURRENT_USER, programKey().c_str());  // what a run that was ended has left
  measureStore(report, *shell.settings());
  const HMODULE program = GetModuleHandleW(nullptr);
  shell.pluginManager()->registerDescriptor(program, descriptorOf(L"BenchSaved").get());
  measureSaving(report, *shell.pluginManager());
  measureLaterRun(report, *shell.pluginManager());
  measureFirstRun(report, *shell.pluginManager());
  RegDeleteTreeW(HKEY_CURRENT_USER, programKey().c_str());
}

const Area area{"settings", measureSettings};

}  // namespace
}  // namespace corvix::bench
