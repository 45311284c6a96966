// The settings store against nested maps behind the same kind of lock, and taking in the library's own settings
// against nothing but the registry calls that it needs.
#include "bench/Bench.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/xml/XmlNode.h"
#include "core/xml/XmlbinReader.h"
#include "shell/Plugin.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <variant>

#include <windows.h>

namespace corvix::bench {
namespace {

constexpr wchar_t kGroup[] = L"Quality";
constexpr wchar_t kInteger[] = L"ImageStretchMode";
constexpr wchar_t kText[] = L"ImageSizeLimit";

using Value = std::variant<std::monostate, std::wstring, double, i32, bool>;

class NestedMaps {
 public:
  bool get(const std::wstring& group, const std::wstring& item, Value& value) {
    SCriticalSection::Lock lock(section_);
    const auto found = groups_.find(group);
    if (found == groups_.end()) return false;
    const auto inGroup = found->second.find(item);
    if (inGroup == found->second.end()) return false;
    value = inGroup->second;
    return true;
  }
  void set(const std::wstring& group, const std::wstring& item, const Value& value) {
    SCriticalSection::Lock lock(section_);
    groups_[group][item] = value;
  }

 private:
  SCriticalSection section_;
  std::unordered_map<std::wstring, std::unordered_map<std::wstring, Value>> groups_;
};

// The same groups, items and kinds of values.
void fill(NestedMaps& maps, const IBSettings& settings) {
  for (i32 g = 0; g < settings.groupCount(); ++g) {
    const wchar_t* const group = settings.groupAt(g);
    for (i32 i = 0; i < settings.itemCount(group); ++i) {
      Variant value;
      settings.getValue(group, settings.itemAt(group, i), value);
      if (value.tag() == Variant::Tag::Text) maps.set(group, settings.itemAt(group, i), std::wstring(value.text()));
      if (value.tag() == Variant::Tag::Integer) maps.set(group, settings.itemAt(group, i), value.integer());
      if (value.tag() == Variant::Tag::Bool) maps.set(group, settings.itemAt(group, i), value.truth());
    }
  }
}

template <class Operation>
Work repeat(Operation operation) {
  return [operation](std::uint64_t count) mutable {
    for (std::uint64_t i = 0; i < count; ++i) operation(i);
  };
}

void measureStore(Report& report, IBSettings& settings) {
  NestedMaps maps;
  fill(maps, settings);
  const char* const peer = "nested unordered_maps, same lock";
  for (const auto& [name, item, wanted] : {std::tuple("get an integer", kInteger, 0.6), {"get a text", kText, 1.0}}) {
    const wchar_t* const key = item;
    report.compare(name, peer, wanted, repeat([&settings, key, value = Variant()](std::uint64_t) mutable {
                     settings.getValue(kGroup, key, value);
                     keep(value);
                   }),
                   repeat([&maps, key, value = Value()](std::uint64_t) mutable {
                     maps.get(kGroup, key, value);
                     keep(value);
                   }));
  }
  const std::wstring group = kGroup;
  const std::wstring integer = kInteger;
  report.compare("get an integer, the peer's keys made before", peer, 0,
                 repeat([&, value = Variant()](std::uint64_t) mutable {
                   settings.getValue(kGroup, kInteger, value);
                   keep(value);
                 }),
                 repeat([&, value = Value()](std::uint64_t) mutable {
                   maps.get(group, integer, value);
                   keep(value);
                 }));
  report.compare("set an integer", peer, 0, repeat([&](std::uint64_t i) {
                   settings.setValue(kGroup, kInteger, Variant(static_cast<i32>(i & 1)));
                 }),
                 repeat([&](std::uint64_t i) { maps.set(kGroup, kInteger, Value(static_cast<i32>(i & 1))); }));
}

// The library's descriptor with nothing but its settings.
Ref<XMLNode> settingsOf(HMODULE library) {
  HRSRC__* const resource = FindResourceW(library, L"PLUGININFO", L"PLUGININFO");
  auto root =
      Ref<XMLNode>::adopt(readXmlbin(LockResource(LoadResource(library, resource)), SizeofResource(library, resource)));
  auto& top = static_cast<XMLNodeNode&>(*root);
  for (i32 p = 0; p < top.childCount(); ++p) {
    if (top.childAt(p)->nameView() != L"Plugin") continue;
    auto& plugin = static_cast<XMLNodeNode&>(*top.childAt(p));
    for (i32 i = plugin.childCount(); i-- > 0;) {
      if (plugin.childAt(i)->nameView() == L"Interface") plugin.removeChild(i)->release();
    }
  }
  return root;
}

void readBare(const std::wstring& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  for (const wchar_t* name : {L"Data", L"DefaultValue", L"Type", L"Values"}) {
    wchar_t text[256];
    DWORD type = 0;
    DWORD size = sizeof text;
    RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    keep(text);
  }
  RegCloseKey(key);
}

void measureRegistration(Report& report, IShell& shell) {
  const HMODULE library = GetModuleHandleW(L"corvix.dll");
  const Ref<XMLNode> root = settingsOf(library);
  wchar_t program[MAX_PATH];
  std::wstring prefix(program, GetModuleFileNameW(nullptr, program, MAX_PATH));
  std::replace(prefix.begin(), prefix.end(), L'\\', L'/');
  prefix = L"Software\\Marrowby\\Corvix\\" + prefix + L"\\Options\\";
  std::vector<std::wstring> paths;
  const IPluginModule& own = *shell.pluginManager()->moduleAt(0);
  for (i32 i = 0; i < own.settingCount(); ++i)
    paths.push_back(prefix + own.settingAttribute(i, L"Group") + L"\\" + own.settingAttribute(i, L"Item"));
  report.compare("take in the library's 17 settings, a later run", "bare registry calls", 1.1,
                 repeat([&](std::uint64_t) { shell.pluginManager()->registerDescriptor(library, root.get()); }),
                 repeat([&](std::uint64_t) {
                   for (const std::wstring& path : paths) readBare(path);
                 }));
}

void measureSettings(Report& report) {
  IShell& shell = *IShell::getInstance();
  measureStore(report, *shell.settings());
  measureRegistration(report, shell);
}

const Area area{"settings", measureSettings};

}  // namespace
}  // namespace corvix::bench
