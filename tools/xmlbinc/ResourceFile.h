// A resource file (.res), which resource compilers turn into an object as it is: no preprocessor, no quoting of names.
#pragma once

#include "tools/xmlbinc/Tree.h"

#include <span>
#include <string>
#include <string_view>

namespace corvix::xmlbinc {

/// What a resource file begins with, an empty entry.
extern const std::string_view kResourceFileStart;

/// A further resource of type PLUGININFO.
struct NamedTree {
  std::u16string name;
  Tree tree;
};

/// The tree's block as a resource of type PLUGININFO, named PLUGININFO or as its form says (LANGUAGE), version
/// information from the first Plugin or Language element, what it does not say left out and what is longer than 1000
/// units cut, and the templates. `module` is the module's file name, in UTF-8.
std::string writeResourceFile(const Tree& tree, std::string_view module, std::span<const NamedTree> templates = {});

}  // namespace corvix::xmlbinc
