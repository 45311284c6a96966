// MenuTemplates: puts the templates of all modules together. A template is hostile: whatever is beyond the limits is
// left out, and the log says so.
#pragma once

#include "core/xml/XmlNode.h"
#include "shell/menus/KMenuItem_p.h"

#include <map>
#include <optional>
#include <string_view>

namespace corvix {

using Menus = std::vector<Ref<KMenuItem>>;

class MenuTemplates {
 public:
  static constexpr int kDeepest = 8;                  // sub-menus inside each other
  static constexpr std::size_t kMostElements = 4096;  // of one module
  static constexpr std::size_t kLongestText = 1024;   // of one attribute, in units
  static constexpr int kMostClashesSaid = 20;

  // Modules in their order; the tree is not needed any more afterwards.
  void add(const XMLNode* root, IPluginModule* module);

  // All of them. Once, at the end.
  Menus finish();

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  struct Element {
    std::size_t parent;  // among those of the module, or kNone
    Attributes attributes;
  };
  class Reading;
  struct Named {
    const KMenuItem* parent;  // null: a menu
    std::wstring_view id;
    friend auto operator<=>(const Named&, const Named&) = default;
  };
  template <class Key, class Value>
  using Map = std::map<Key, Value, std::less<>, HeapAllocator<std::pair<const Key, Value>>>;

  KMenuItem* enter(const Element& element, KMenuItem* parent, IPluginModule* module);
  KMenuItem* subMenu(const wchar_t* id, KMenuItem* parent, IPluginModule* module);
  void claim(const wchar_t* key, KMenuItem& item);

  std::shared_ptr<MenuTexts> texts_ = std::make_shared<MenuTexts>();
  Menus menus_;
  Map<Named, KMenuItem*> known_;
  Map<std::wstring, KMenuItem*> keys_;  // who has them
  int clashes_ = 0;
};

// A key as IMenuItem gives it; nothing when it is none.
std::optional<std::wstring> normalizedKey(std::wstring_view text);

}  // namespace corvix
