// The test program as a plug-in of its own: descriptors put together in code, objects that note what happens.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/xml/XmlNode.h"
#include "shell/Plugin.h"
#include "shell/Shell.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

namespace corvix::testing_support {

// What the objects of the test noted, in order.
inline std::string& journal() {
  static std::string& text = *new std::string;  // read while the process ends, too
  return text;
}

inline std::string narrow(std::wstring_view text) { return {text.begin(), text.end()}; }

using AttributeRows = std::initializer_list<std::pair<const wchar_t*, const wchar_t*>>;

inline void addAttributes(XMLNodeNode& element, AttributeRows rows) {
  for (const auto& [name, value] : rows)
    element.appendChild(make<XMLNodeParam>(&element, XmlNodeType::Attribute, name, value).get());
}

// A descriptor of this program.
class Descriptor {
 public:
  explicit Descriptor(const wchar_t* manufacturer = L"Corvix tests") {
    root_->appendChild(plugin_.get());
    addAttributes(*plugin_, {{L"Manufacturer", manufacturer}, {L"GUID", L"1, 2, 3, 4"}});
  }

  Descriptor& interface_(const wchar_t* name, const wchar_t* order = nullptr, AttributeRows more = {}) {
    const auto element = make<XMLNodeNode>(plugin_.get(), XmlNodeType::Element, L"Interface");
    addAttributes(*element, {{L"Name", name}, {L"GUID", L"1, 2, 3, 4"}});
    if (order) addAttributes(*element, {{L"Order", order}});
    addAttributes(*element, more);
    plugin_->appendChild(element.get());
    return *this;
  }

  Descriptor& plugin(AttributeRows rows) {
    addAttributes(*plugin_, rows);
    return *this;
  }

  Descriptor& requires_(const wchar_t* interfaceName, const wchar_t* minVersion) {
    const auto element = make<XMLNodeNode>(plugin_.get(), XmlNodeType::Element, L"Requires");
    addAttributes(*element, {{L"Interface", interfaceName}, {L"MinVersion", minVersion}});
    plugin_->appendChild(element.get());
    return *this;
  }

  void registerIn(IPluginManager& manager) { manager.registerDescriptor(GetModuleHandleW(nullptr), root_.get()); }

 private:
  Ref<XMLNodeNode> root_ = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"CorvixRC");
  Ref<XMLNodeNode> plugin_ = make<XMLNodeNode>(root_.get(), XmlNodeType::Element, L"Plugin");
};

// What this program makes under a name: a static one beside the class is enough, OwnFactory.cpp finds it.
struct OwnObject {
  OwnObject(const wchar_t* interfaceName, IBSmartObject* (*create)()) { all().push_back({interfaceName, create}); }
  static std::vector<FactoryRow>& all() {
    static std::vector<FactoryRow> rows;
    return rows;
  }
};

// Has none of the interfaces that it is asked for.
class OfNoUse final : public BSmartObject {
  CORVIX_IDENTITY(OfNoUse, 0x4A887A0A, 0xC4EB0423, 0xA882D117, 0xC9FE7A7A, BSmartObject)
 public:
  OfNoUse() { journal() += "made "; }
  ~OfNoUse() override { journal() += "gone "; }
};

inline IShell& shell() {
  IShell::startUnattended();
  return *IShell::getInstance();
}

}  // namespace corvix::testing_support
