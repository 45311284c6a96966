// XML text to node tree.
//
// What of the text becomes a node: elements, attributes, comments inside of the root, and text. Text and CDATA
// sections next to each other are one text node. Literal white space with nothing but markup on both sides is
// layout and is dropped; a character reference or a CDATA section always makes text. Processing instructions, the
// XML declaration and comments outside of the root have no counterpart in a block and are dropped.
#pragma once

#include "tools/xmlbinc/SourceText.h"
#include "tools/xmlbinc/Tree.h"

namespace corvix::xmlbinc {

/// The nodes' offsets are into the source's text. Throws InputError.
Tree readXml(const SourceText& source);

}  // namespace corvix::xmlbinc
