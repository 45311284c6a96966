// What modules declare in a family, with the attributes that its descriptor has, or the templates of views
// (VIEWTEMPLATES) of the same module. None of their code is loaded.
#pragma once

#include "shell/PluginManager.h"

#include <map>
#include <string>
#include <vector>

namespace corvix::gui {

struct Declared {
  Ref<IPluginInterface> entry;
  std::map<std::wstring, std::wstring> templates;  // of an element with its name

  const wchar_t* name() const { return entry->name(); }
  // Empty when neither says it.
  std::wstring attribute(const wchar_t* attributeName) const;
};

// By their order, those of one order as their modules come; of one name only the first. `family` is "Panel.".
std::vector<Declared> declaredIn(const wchar_t* family);

}  // namespace corvix::gui
