// Binary block to node tree. Blocks come from anywhere: memory stays in step with the block's size, whatever its
// counts and references say, and nothing recurses.
#pragma once

#include "tools/xmlbinc/Tree.h"

#include <cstddef>
#include <string_view>

namespace corvix::xmlbinc {

struct Block {
  Tree tree;
  std::size_t size;  ///< bytes up to the end of the root; what follows belongs to nothing
};

/// The nodes' offsets are into the block. Throws InputError.
Block readBlock(std::string_view bytes);

}  // namespace corvix::xmlbinc
