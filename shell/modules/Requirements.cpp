#include "shell/modules/Requirements_p.h"

#include "shell/modules/Contract_p.h"
#include "shell/modules/KClassFactoryLocal_p.h"

#include <algorithm>
#include <set>

namespace corvix {

namespace {

std::wstring fileOf(const KPluginModule& module) {
  const std::wstring_view path = module.path();
  return std::wstring(path.substr(path.find_last_of(L"\\/") + 1));
}

std::wstring_view textOf(const Attributes& attributes, std::wstring_view name) noexcept {
  const wchar_t* const text = attributes.find(name);
  return text ? text : std::wstring_view();
}

}  // namespace

// The list grows while it is walked.
Requirements::Requirements(const std::vector<const KPluginModule*>& modules, const KClassFactoryLocal& registry) {
  for (const KPluginModule* const module : modules) add(*module);
  for (std::size_t i = 0; i < nodes_.size(); ++i) findNeeds(i, registry);
  settle();
}

std::size_t Requirements::add(const KPluginModule& module) {
  const auto [place, isNew] = indices_.try_emplace(&module, nodes_.size());
  if (isNew) nodes_.push_back({&module, {}});
  return place->second;
}

void Requirements::findNeeds(std::size_t index, const KClassFactoryLocal& registry) {
  for (const Attributes& required : nodes_[index].module->descriptor().requirements()) {
    const std::wstring_view name = textOf(required, L"Interface");
    const Need need{name, textOf(required, L"MinVersion"), &providersOf(name, registry)};
    nodes_[index].needs.push_back(need);
  }
}

const std::vector<std::size_t>& Requirements::providersOf(std::wstring_view interfaceName,
                                                          const KClassFactoryLocal& registry) {
  const auto [place, isNew] = providers_.try_emplace(interfaceName);
  if (!isNew) return place->second;
  const KInterfaceCollection* const found = registry.find(interfaceName);
  std::set<std::size_t> seen;
  for (i32 i = 0; found && i < found->count(); ++i) {
    const auto* const provider = corvix::query<KPluginModule>(found->item(i)->module());
    if (!provider) continue;
    const std::size_t index = add(*provider);
    if (seen.insert(index).second) place->second.push_back(index);
  }
  return place->second;
}

// Pass by pass those whose needs were met before: neither a circle nor a long chain takes stack.
void Requirements::settle() {
  bool hasChanged = true;
  for (i32 step = 0; hasChanged; ++step) {
    hasChanged = false;
    for (Node& node : nodes_) {
      if (node.step != kUnmet ||
          !std::all_of(node.needs.begin(), node.needs.end(), [&](const Need& need) { return isMet(need, step); }))
        continue;
      node.step = step;
      hasChanged = true;
    }
  }
}

bool Requirements::fits(const Need& need, const Node& provider) const noexcept {
  return provider.module->state() != ModuleState::Failed &&
         compareVersions(provider.module->version(), need.minVersion) >= 0;
}

bool Requirements::isMet(const Need& need, i32 step) const noexcept {
  return std::any_of(need.providers->begin(), need.providers->end(),
                     [&](std::size_t i) { return nodes_[i].step < step && fits(need, nodes_[i]); });
}

i32 Requirements::stepOf(const KPluginModule& module) const noexcept {
  const auto found = indices_.find(&module);
  return found == indices_.end() ? kUnmet : nodes_[found->second].step;
}

// Follows what is missing from module to module, to the one that nobody can help or to one that was there before.
std::wstring Requirements::whyUnmet(const KPluginModule& module) const {
  std::size_t at = indices_.at(&module);
  if (nodes_[at].step != kUnmet) return {};
  std::wstring why = L"It needs ";
  for (std::vector<std::size_t> way;;) {
    way.push_back(at);
    const auto& needs = nodes_[at].needs;
    const Need& need = *std::find_if(needs.begin(), needs.end(), [&](const Need& one) { return !isMet(one, kUnmet); });
    why += L'"' + std::wstring(need.interfaceName) + L'"';
    if (!need.minVersion.empty()) why += L" of version " + std::wstring(need.minVersion) + L" or newer";
    if (need.providers->empty()) return why + L", which no module declares.";
    const auto next = std::find_if(need.providers->begin(), need.providers->end(),
                                   [&](std::size_t i) { return fits(need, nodes_[i]); });
    if (next == need.providers->end()) {
      const KPluginModule& provider = *nodes_[need.providers->front()].module;
      why += L", and " + fileOf(provider) + L", which declares it, ";
      if (provider.state() == ModuleState::Failed) return why + L"failed.";
      return why + L"has " + (*provider.version() ? std::wstring(L"version ") + provider.version() : L"no version") +
             L'.';
    }
    at = *next;
    why += L" of " + fileOf(*nodes_[at].module);
    if (std::find(way.begin(), way.end(), at) != way.end()) return why + L": they need each other in a circle.";
    why += L", which needs ";
  }
}

}  // namespace corvix
