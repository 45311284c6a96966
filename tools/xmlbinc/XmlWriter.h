// Node tree to XML text that reads back as the same tree.
#pragma once

#include "tools/xmlbinc/Tree.h"

#include <string>

namespace corvix::xmlbinc {

/// UTF-8, indented by two blanks, ending in a line end. Throws InputError with the offset of the node at fault for
/// what XML cannot say: a root that is no element, an attribute behind other children or given twice, a name that
/// is none in XML, two texts next to each other, half a surrogate pair, a control character, "--" or a carriage
/// return in a comment; and for nesting and sizes beyond the limits.
std::string writeXml(const Tree& tree);

}  // namespace corvix::xmlbinc
