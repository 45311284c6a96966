// Where the running program keeps what is to last.
#pragma once

#include "core/baselib/text/WideString.h"

namespace corvix {

// The path of its key below HKEY_CURRENT_USER, which need not be there yet. Options, windows, recent files each have a
// key of their own in it. [any thread]
CORVIX_API WideString applicationKey();

}  // namespace corvix
