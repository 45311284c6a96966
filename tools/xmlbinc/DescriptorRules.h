// What a plug-in descriptor may consist of, as one table: a new element, attribute or check is a row of it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace corvix::xmlbinc {

struct Warning {
  std::size_t offset;
  std::string message;
};

struct Findings {
  std::vector<Warning> warnings;
  std::unordered_set<std::string> seen;  ///< what may stand in a descriptor once

  void warn(std::size_t offset, std::string message) { warnings.push_back({offset, std::move(message)}); }
};

struct Attribute {
  std::string name;
  std::string value;
  std::size_t offset;
};

struct Element {
  std::string name;
  std::size_t offset;
  std::vector<Attribute> attributes;

  const Attribute* find(std::string_view attribute) const;
  std::string_view value(std::string_view attribute) const;  ///< empty if there is none
};

struct AttributeRule {
  std::string_view name;
  std::string_view ifMissing;  ///< what a missing one leads to; empty if it may be left out
  void (*check)(const Attribute&, Findings&) = nullptr;
};

struct ElementRule {
  std::string_view name;
  std::string_view parent;     ///< empty for the root
  std::string_view ifMissing;  ///< as for attributes; of an element that is needed, only the first is read
  std::span<const AttributeRule> attributes;
  void (*check)(const Element&, Findings&) = nullptr;  ///< what concerns several attributes
};

/// The root's rule is the first.
std::span<const ElementRule> descriptorRules();

}  // namespace corvix::xmlbinc
