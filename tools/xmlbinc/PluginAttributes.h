// Attributes that a build adds to what the author wrote, such as which SDK made the module.
#pragma once

#include "tools/xmlbinc/Tree.h"

#include <string>
#include <utility>
#include <vector>

namespace corvix::xmlbinc {

using NamedValues = std::vector<std::pair<std::u16string, std::u16string>>;

/// The tree with these as the first attributes of its Plugin element; those of the same names that stood there are
/// gone. A tree without that element comes back as it was.
Tree withPluginAttributes(const Tree& tree, const NamedValues& values);

}  // namespace corvix::xmlbinc
