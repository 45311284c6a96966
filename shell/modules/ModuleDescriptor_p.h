// ModuleDescriptor: what a module declares, taken out of its descriptor's tree. A descriptor is hostile: whatever is
// beyond the limits is left out, and said.
#pragma once

#include "core/xml/Attributes_p.h"

#include <memory>
#include <string>

namespace corvix {

class ModuleDescriptor {
 public:
  static constexpr std::size_t kLongestName = 1024;  // of attributes, interfaces, groups and items, in units
  static constexpr std::size_t kLongestValue = 64 * 1024;
  static constexpr u32 kMostAttributes = 1000;  // of one element
  static constexpr std::size_t kMostSettings = 4096;
  static constexpr std::size_t kMostSettingText = 1024 * 1024;  // of all settings together: they go to the registry
  static constexpr std::size_t kMostRequirements = 64;

  // Once; the tree is not needed any more afterwards. The interfaces in document order.
  std::vector<Attributes> read(const XMLNodeNode& plugin);

  Attributes plugin() const noexcept { return table_.first(pluginCount_); }
  const std::vector<Attributes>& settings() const noexcept { return more().settings; }
  const std::vector<Attributes>& requirements() const noexcept { return more().requirements; }

  // Sentences about what was left out; mostly empty.
  std::wstring complaints() const;

 private:
  class Reading;

  // What most modules have nothing of.
  struct More {
    std::vector<Attributes> settings;
    std::vector<Attributes> requirements;  // each with an "Interface"
    u32 attributesLeftOut = 0;
    u32 namesTooLong = 0;  // interfaces and settings
    u32 requirementsTooMany = 0;
    u32 settingsTooMany = 0;
  };
  const More& more() const noexcept;

  AttributeTable table_;
  u32 pluginCount_ = 0;
  std::unique_ptr<More> more_;  // null: nothing
};

}  // namespace corvix
