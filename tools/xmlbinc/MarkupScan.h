// A look over the markup before the XML parser sees it. The parser calls itself for every nested element and skips
// what it does not know, so the depth is limited here, and here every "<" is made sure to mean to the parser what
// it means to XML.
#pragma once

#include <string_view>

namespace corvix::xmlbinc {

/// Throws InputError for: elements nested too deeply, left open or closed in the wrong order; comments and other
/// sections left open; "<" or quotes where none may stand; document type declarations and other "<!" than comments
/// and CDATA; an XML declaration that is not at the start.
void scanMarkup(std::string_view text);

}  // namespace corvix::xmlbinc
