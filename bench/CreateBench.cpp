// Making an object by interface name against a hand-written map of factories for the same object. This program
// is its own plug-in module: it carries a descriptor and exports a class factory.
#include "bench/Bench.h"
#include "core/xml/XmlbinReader.h"
#include "shell/Plugin.h"

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include <windows.h>

namespace corvix::bench {
namespace {

class Object final : public BSmartObject {
  CORVIX_IDENTITY(Object, 0x30000001, 0x5F0A, 0x77, 0x1, BSmartObject)
};

constexpr wchar_t kName[] = L"Bench.Object";

// Nobody makes a string to look something up: the name is seen as it stands.
struct ViewHash {
  using is_transparent = void;
  std::size_t operator()(std::wstring_view text) const noexcept { return std::hash<std::wstring_view>()(text); }
};

IPluginManager& managerWithThisProgram() {
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  const HMODULE program = GetModuleHandleW(nullptr);
  HRSRC__* const resource = FindResourceW(program, L"PLUGININFO", L"PLUGININFO");
  const auto root =
      Ref<XMLNode>::adopt(readXmlbin(LockResource(LoadResource(program, resource)), SizeofResource(program, resource)));
  if (!manager.registerDescriptor(program, root.get()))
    throw std::runtime_error("this program's descriptor is not readable");
  return manager;
}

void measureCreate(Report& report) {
  IPluginManager& manager = managerWithThisProgram();
  std::unordered_map<std::wstring, std::function<IBSmartObject*()>, ViewHash, std::equal_to<>> factories;
  std::map<std::wstring, std::function<IBSmartObject*()>, std::less<>> sorted;
  const auto make = [] { return new Object; };
  factories[kName] = make;
  sorted[kName] = make;
  for (i32 i = 0; i < manager.interfaceCount(); ++i) {
    factories.emplace(manager.interfaceAt(i)->name(), make);
    sorted.emplace(manager.interfaceAt(i)->name(), make);
  }

  const wchar_t* name = kName;
  keep(name);  // so that its length is not known beforehand
  const auto byManager = [&](std::uint64_t n) {
    for (std::uint64_t i = 0; i < n; ++i) {
      IBSmartObject* object = manager.createObject(name);
      keep(object);
      object->release();
    }
  };
  const auto byMap = [name](auto& map) {
    return [&map, name](std::uint64_t n) {
      for (std::uint64_t i = 0; i < n; ++i) {
        IBSmartObject* object = map.find(std::wstring_view(name))->second();
        keep(object);
        object->release();
      }
    };
  };
  report.compare("create by name and release", "std::unordered_map by string_view", 1.0, byManager, byMap(factories));
  // A tree of so few names compares a letter or two: told beside it.
  report.compare("create by name and release", "std::map by string_view", 0, byManager, byMap(sorted));
}

const Area area{"creation", measureCreate};

}  // namespace
}  // namespace corvix::bench

namespace corvix::bench {
IBSmartObject* makeEventTarget();  // in ShellBench.cpp
}

CORVIX_PLUGIN({L"Bench.Object", []() -> corvix::IBSmartObject* { return new corvix::bench::Object; }},
              {L"GlobalEvent.Bench", corvix::bench::makeEventTarget})
