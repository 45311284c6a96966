// What a descriptor's author gets wrong, though it compiles.
#pragma once

#include "tools/xmlbinc/DescriptorRules.h"
#include "tools/xmlbinc/Tree.h"

#include <vector>

namespace corvix::xmlbinc {

/// In the order of the text. The tree is one that XML can say.
std::vector<Warning> checkDescriptor(const Tree& tree);

}  // namespace corvix::xmlbinc
