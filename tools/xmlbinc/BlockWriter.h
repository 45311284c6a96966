// Node tree to binary block.
#pragma once

#include "tools/xmlbinc/Tree.h"

#include <string>

namespace corvix::xmlbinc {

/// A string's second and later occurrences are references to its first.
std::string writeBlock(const Tree& tree);

}  // namespace corvix::xmlbinc
