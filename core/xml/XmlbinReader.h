// Reads the binary form of XML that descriptors are stored in. See docs/xmlbin-format.md.
#pragma once

#include "core/xml/XmlNode.h"

namespace corvix {

// The root of the tree, with one reference that the caller owns, or null when the block is malformed in any
// way or memory runs out. The block is not needed afterwards; what follows the root node in it is ignored.
// Reports nothing, throws nothing, and takes memory in proportion to `sizeBytes` whatever the block claims.
[[nodiscard]] CORVIX_API XMLNode* readXmlbin(const void* block, u32 sizeBytes) noexcept;

}  // namespace corvix
