#include "plugins/gui/Declared.h"

#include "core/xml/XmlNode.h"
#include "shell/ModuleResources.h"
#include "shell/Shell.h"

#include <algorithm>
#include <cwchar>
#include <string_view>
#include <unordered_set>

namespace corvix::gui {

namespace {

using Texts = std::map<std::wstring, std::wstring>;

// By the name of what they are for.
std::map<std::wstring, Texts> templatesOf(IPluginModule& module) {
  std::map<std::wstring, Texts> found;
  auto* const resources = query<IModuleResources>(&module);
  const auto root = Ref<XMLNode>::adopt(resources ? resources->readResource(L"VIEWTEMPLATES") : nullptr);
  if (!root || root->type() != XmlNodeType::Element) return found;
  const auto& all = static_cast<const XMLNodeNode&>(*root);
  for (i32 i = 0; i < all.childCount(); ++i) {
    if (all.childAt(i)->type() != XmlNodeType::Element) continue;
    const auto& element = static_cast<const XMLNodeNode&>(*all.childAt(i));
    Texts texts;
    for (i32 a = 0; a < element.childCount(); ++a) {
      if (element.childAt(a)->type() != XmlNodeType::Attribute) continue;
      const auto& attribute = static_cast<const XMLNodeParam&>(*element.childAt(a));
      texts.emplace(attribute.nameView(), attribute.valueView());
    }
    found.emplace(texts[L"Name"], std::move(texts));
  }
  return found;
}

int orderOf(const Declared& declared) {
  const std::wstring order = declared.attribute(L"Order");
  if (!_wcsicmp(order.c_str(), L"Low") || !_wcsicmp(order.c_str(), L"Hight")) return -100;
  return static_cast<int>(std::wcstol(order.c_str(), nullptr, 0));
}

}  // namespace

std::wstring Declared::attribute(const wchar_t* attributeName) const {
  if (const wchar_t* const said = entry->attribute(attributeName)) return said;
  const auto found = templates.find(attributeName);
  return found == templates.end() ? std::wstring() : found->second;
}

std::vector<Declared> declaredIn(const wchar_t* family) {
  std::vector<Declared> all;
  const std::wstring_view prefix = family;
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  std::map<IPluginModule*, std::map<std::wstring, Texts>> templates;
  std::unordered_set<std::wstring> names;
  for (i32 i = 0; i < manager.interfaceCount(); ++i) {
    IPluginInterface* const entry = manager.interfaceAt(i);
    const std::wstring_view name = entry->name();
    if (name.substr(0, prefix.size()) != prefix || entry->module()->state() == ModuleState::Failed) continue;
    if (!names.insert(std::wstring(name)).second) continue;
    Declared one{Ref<IPluginInterface>::share(entry), {}};
    const bool saysAll = entry->attribute(L"For") || entry->attribute(L"Text");
    if (!saysAll) {
      auto [known, isNew] = templates.try_emplace(entry->module());
      if (isNew) known->second = templatesOf(*entry->module());
      if (const auto found = known->second.find(entry->name()); found != known->second.end())
        one.templates = found->second;
    }
    all.push_back(std::move(one));
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const Declared& a, const Declared& b) { return orderOf(a) < orderOf(b); });
  return all;
}

}  // namespace corvix::gui
