// What the author of a descriptor or a template gets wrong, though it compiles.
#pragma once

#include "tools/xmlbinc/DescriptorRules.h"
#include "tools/xmlbinc/Tree.h"

#include <vector>

namespace corvix::xmlbinc {

/// In the order of the text. The tree is one that XML can say.
std::vector<Warning> check(const Tree& tree, const Form& form);

/// What the tree's root holds tells its form.
const Form& formOf(const Tree& tree);

}  // namespace corvix::xmlbinc
