// For the library's own short cuts through the global data.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

// Never 0, and another number after every change of any value.
u32 globalDataChanges() noexcept;

// For tests: how many buckets the table has.
u32 globalDataBuckets() noexcept;

}  // namespace corvix
