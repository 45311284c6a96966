// Requirements: whether what modules say they need is there, and who needs whom.
#pragma once

#include "shell/modules/PluginModule_p.h"

#include <limits>
#include <map>
#include <vector>

namespace corvix {

class Requirements {
 public:
  static constexpr i32 kUnmet = std::numeric_limits<i32>::max();

  // Of these modules and of all that they need, as it is now. Modules and registry outlive it.
  Requirements(const std::vector<const KPluginModule*>& modules, const KClassFactoryLocal& registry);

  // 0 for a module that needs nothing, else one more than those that it needs; kUnmet when something is missing.
  i32 stepOf(const KPluginModule& module) const noexcept;

  // A sentence that says what the module lacks; empty when nothing.
  std::wstring whyUnmet(const KPluginModule& module) const;

 private:
  struct Need {
    std::wstring_view interfaceName;
    std::wstring_view minVersion;
    const std::vector<std::size_t>* providers;  // indices; whoever declares the interface
  };
  struct Node {
    const KPluginModule* module;
    std::vector<Need> needs;
    i32 step = kUnmet;
  };

  std::size_t add(const KPluginModule& module);
  void findNeeds(std::size_t index, const KClassFactoryLocal& registry);
  const std::vector<std::size_t>& providersOf(std::wstring_view interfaceName, const KClassFactoryLocal& registry);
  void settle();
  bool fits(const Need& need, const Node& provider) const noexcept;
  bool isMet(const Need& need, i32 step) const noexcept;

  std::vector<Node> nodes_;
  std::map<const KPluginModule*, std::size_t> indices_;
  std::map<std::wstring_view, std::vector<std::size_t>> providers_;  // by what they declare; each module once
};

}  // namespace corvix
