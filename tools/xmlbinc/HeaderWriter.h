// A header with what a descriptor declares, for the code of its module: names and identifiers stand once, and the
// compiler finds a row of CORVIX_PLUGIN that is missing or too many.
#pragma once

#include "tools/xmlbinc/SourceText.h"
#include "tools/xmlbinc/Tree.h"

#include <string>
#include <string_view>

namespace corvix::xmlbinc {

/// C++17. `path` is the descriptor's file as messages are to name it. Interfaces without four words are left out.
std::string writeHeader(const Tree& tree, const SourceText& source, std::string_view path);

}  // namespace corvix::xmlbinc
