// Opening a location whatever its scheme.
#pragma once

#include "core/baselib/text/WideString.h"
#include "core/suppliers/Supplier.h"
#include "shell/PluginManager.h"

namespace corvix {

// Asks the suppliers of the location's scheme, in their order, for a stream to read from, owned by the caller;
// null when none of them has one. A path of the system will do too. [shell thread]
CORVIX_API IBStream* openLocation(IPluginManager& manager, const wchar_t* location);

// The interface name of the suppliers of a location: "Supplier." and its scheme in lower case; of a path,
// "Supplier.file".
CORVIX_API WideString supplierNameOf(const wchar_t* location);

}  // namespace corvix
