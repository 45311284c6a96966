// What a descriptor says, from its block.
#pragma once

#include "core/baselib/identity/StypeInfo.h"
#include "tools/xmlbinc/Tree.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace corvix::tool {

// One element's attributes in their order, in UTF-8.
struct Element {
  std::vector<std::pair<std::string, std::string>> attributes;

  std::string value(std::string_view name) const;  // empty if there is none
};

struct DeclaredInterface : Element {
  std::string name;
  ClassWords words;
};

struct Descriptor {
  xmlbinc::Tree tree;
  Element plugin;
  std::optional<ClassWords> identifier;
  std::vector<DeclaredInterface> interfaces;  // those that are registered: with four words
  std::vector<Element> settings;
  std::vector<Element> requirements;
};

// Throws xmlbinc::InputError when the block is malformed.
Descriptor readDescriptor(std::string_view block);

std::string textOf(const ClassWords& words);

}  // namespace corvix::tool
