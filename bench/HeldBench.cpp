// What one more of something holds of the heap, as the mean of a thousand, against the bytes that are wanted at most.
#include "bench/Bench.h"
#include "bench/Held.h"
#include "core/xml/XmlNode.h"
#include "shell/Plugin.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace corvix::bench {
namespace {

constexpr int kCount = 1000;

class Listener final : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Listener, 0x6B1F94D0, 0x2C73E8A5, 0xD4086B3F, 0x91E5A27C, BSmartObject, IDestroyListener)
 public:
  int onDestroy(IBRTTISupport*) override { return 0; }
};

template <class Make>
double heldByEach(Make make) {
  const double before = heldByHeap();
  make();
  return (heldByHeap() - before) / kCount;
}

// A descriptor put together in code; what it holds itself is given back before anything is counted.
class Declaration {
 public:
  Declaration() { root_->appendChild(plugin_.get()); }

  using Attributes = std::vector<std::pair<const wchar_t*, std::wstring>>;
  void add(const wchar_t* element, const Attributes& attributes) {
    const auto node = make<XMLNodeNode>(plugin_.get(), XmlNodeType::Element, element);
    for (const auto& [name, value] : attributes)
      node->appendChild(make<XMLNodeParam>(node.get(), XmlNodeType::Attribute, name, value.c_str()).get());
    plugin_->appendChild(node.get());
  }
  void name(const std::wstring& identifier) {
    for (const auto& [attribute, value] : Attributes{{L"Name", L"Held"}, {L"Version", L"1.0"}, {L"GUID", identifier}})
      plugin_->appendChild(make<XMLNodeParam>(plugin_.get(), XmlNodeType::Attribute, attribute, value.c_str()).get());
  }
  void registerIn(IPluginManager& manager) { manager.registerDescriptor(GetModuleHandleW(nullptr), root_.get()); }

 private:
  Ref<XMLNodeNode> root_ = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
  Ref<XMLNodeNode> plugin_ = make<XMLNodeNode>(root_.get(), XmlNodeType::Element, L"Plugin");
};

Declaration::Attributes interfaceOf(const std::wstring& name) {
  return {{L"Name", name}, {L"GUID", L"0x20C1A3F4, 0x4B7D1E52, 0x8A6034C9, 0xF1D25B78"}, {L"Order", L"Low"}};
}

double heldByInterface(IPluginManager& manager) {
  return heldByEach([&] {
    Declaration declaration;
    for (int i = 0; i < kCount; ++i) declaration.add(L"Interface", interfaceOf(L"Held.Interface" + std::to_wstring(i)));
    declaration.registerIn(manager);
  });
}

double heldByModule(IPluginManager& manager) {
  return heldByEach([&] {
    for (int i = 0; i < kCount; ++i) {
      Declaration declaration;
      declaration.name(L"0x50A1" + std::to_wstring(1000 + i) + L", 0x4B7D1E52, 0x8A6034C9, 0xF1D25B78");
      declaration.add(L"Interface", interfaceOf(L"Held.Module" + std::to_wstring(i)));
      declaration.registerIn(manager);
    }
  });
}

double heldBySetting(IBSettings& settings) {
  return heldByEach([&] {
    for (int i = 0; i < kCount; ++i) settings.setValue(L"Held", (L"Item" + std::to_wstring(i)).c_str(), i);
  });
}

void measureHeld(Report& report) {
  IShell& shell = *IShell::getInstance();
  std::vector<std::unique_ptr<Listener>> listeners(kCount);
  report.add("bytes held by a counted object, as `new` makes it", "40 bytes", 1, heldByEach([&] {
               for (auto& listener : listeners) listener = std::make_unique<Listener>();
             }),
             40, "bytes");
  BNotifySender sender;
  report.add("bytes held by a listener in a list", "64 bytes", 1, heldByEach([&] {
               for (auto& listener : listeners) sender.addListener(static_cast<IDestroyListener*>(listener.get()));
             }),
             64, "bytes");
  report.add("bytes held by a setting", "160 bytes", 1, heldBySetting(*shell.settings()), 160, "bytes");
  report.add("bytes held by an interface with three attributes", "400 bytes", 1,
             heldByInterface(*shell.pluginManager()), 400, "bytes");
  report.add("bytes held by a module with one interface", "700 bytes", 1, heldByModule(*shell.pluginManager()), 700,
             "bytes");
}

const Area area{"held", measureHeld};

}  // namespace
}  // namespace corvix::bench
