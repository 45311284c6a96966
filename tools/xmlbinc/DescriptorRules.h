// What plug-in descriptors and templates may consist of, as a table for each form: a new element, attribute, family of
// interfaces or check is a row.
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
  std::string_view parents;    ///< with blanks between; empty for the root
  std::string_view ifMissing;  ///< as for attributes; of an element that is needed, only the first is read
  std::span<const AttributeRule> attributes;
  void (*check)(const Element&, Findings&) = nullptr;  ///< what concerns several attributes

  bool belongsIn(std::string_view parent) const;
};

/// Interfaces whose names begin alike, as those who look for them know the prefix, and what else they may say.
struct FamilyRule {
  std::string_view prefix;  ///< with its dot
  std::span<const AttributeRule> attributes;
  void (*check)(const Element&, Findings&) = nullptr;
};

/// What a kind of XML file consists of.
struct Form {
  std::string_view resource;           ///< the name of the resource that it becomes
  std::span<const ElementRule> rules;  ///< the root's is the first
};

/// The form of a resource, or null if the name is that of none that is known.
const Form* formOf(std::string_view resource);

/// The form that has such an element right below its root; else that of descriptors.
const Form& formWith(std::string_view element);

/// The family that an Interface's name says it belongs to, or null.
const FamilyRule* familyOf(std::string_view interfaceName);

}  // namespace corvix::xmlbinc
