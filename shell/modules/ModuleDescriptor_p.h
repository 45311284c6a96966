// ModuleDescriptor: what a module declares, taken out of its descriptor's tree. A descriptor is hostile: whatever is
// beyond the limits is left out, and said.
#pragma once

#include "core/xml/Attributes_p.h"

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

  // Once; the tree is not needed any more afterwards.
  void read(const XMLNodeNode& plugin);

  const Attributes& plugin() const noexcept { return plugin_; }
  const std::vector<Attributes>& settings() const noexcept { return settings_; }
  const std::vector<Attributes>& requirements() const noexcept { return requirements_; }

  // In document order; taken over by the caller.
  std::vector<Attributes> takeInterfaces() noexcept { return std::move(interfaces_); }

  // Sentences about what was left out; mostly empty.
  std::wstring complaints() const;

 private:
  class Reading;

  AttributeTable table_;
  Attributes plugin_;
  std::vector<Attributes> interfaces_;
  std::vector<Attributes> settings_;
  std::vector<Attributes> requirements_;  // each with an "Interface"
  u32 attributesLeftOut_ = 0;
  u32 namesTooLong_ = 0;  // interfaces and settings
  u32 requirementsTooMany_ = 0;
  u32 settingsTooMany_ = 0;
};

}  // namespace corvix
