#include "shell/menus/KMenuManager_p.h"

#include "shell/ModuleResources.h"

#include <algorithm>
#include <string_view>

namespace corvix {

namespace {

// Takes the first word off the text; empty at its end.
std::wstring_view nextWord(std::wstring_view& text) noexcept {
  text.remove_prefix(std::min(text.find_first_not_of(L' '), text.size()));
  const std::wstring_view word = text.substr(0, text.find(L' '));
  text.remove_prefix(word.size());
  return word;
}

bool isAmong(std::wstring_view words, std::wstring_view wanted) noexcept {
  for (std::wstring_view word = nextWord(words); !word.empty(); word = nextWord(words)) {
    if (word == wanted) return true;
  }
  return false;
}

}  // namespace

bool whenHolds(const wchar_t* condition, const wchar_t* words) noexcept {
  std::wstring_view rest = condition ? condition : L"";
  for (std::wstring_view word = nextWord(rest); !word.empty(); word = nextWord(rest)) {
    if (word == L"and") continue;
    const bool isNot = word.front() == L'!';
    if (isAmong(words ? words : L"", word.substr(isNot)) == isNot) return false;
  }
  return true;
}

void KMenuManager::update() {
  Stand stand{modules_.moduleCount(), 0};
  const auto isFailed = [](const IPluginModule& module) { return module.state() == ModuleState::Failed; };
  for (i32 i = 0; i < stand.known; ++i) stand.failed += isFailed(*modules_.moduleAt(i));
  if (stand == stand_) return;
  MenuTemplates templates;
  for (i32 i = 0; i < stand.known; ++i) {
    IPluginModule& module = *modules_.moduleAt(i);
    IModuleResources* const resources = corvix::query<IModuleResources>(&module);
    if (isFailed(module) || module.state() == ModuleState::NoPlugin || !resources) continue;
    templates.add(Ref<XMLNode>::adopt(resources->readResource(L"MENUTEMPL")).get(), &module);
  }
  menus_ = templates.finish();
  stand_ = stand;
}

i32 KMenuManager::menuCount() {
  update();
  return static_cast<i32>(menus_.size());
}

IBSmartObject* KMenuManager::menuAt(i32 index) {
  return index >= 0 && index < menuCount() ? Ref<KMenuItem>(menus_[static_cast<std::size_t>(index)]).detach() : nullptr;
}

IBSmartObject* KMenuManager::menu(const wchar_t* name) {
  update();
  const std::wstring_view wanted = name ? name : L"";
  const auto found =
      std::find_if(menus_.begin(), menus_.end(), [&](const Ref<KMenuItem>& menu) { return menu->id() == wanted; });
  return found == menus_.end() ? nullptr : Ref<KMenuItem>(*found).detach();
}

}  // namespace corvix
