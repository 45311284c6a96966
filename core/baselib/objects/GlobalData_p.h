// For the library's own short cuts through the global data.
#pragma once

#include "core/baselib/Api.h"

#include <atomic>

namespace corvix {

// Never 0, and another number after every change of any value.
extern std::atomic<u32> globalDataChangeCount;
inline u32 globalDataChanges() noexcept { return globalDataChangeCount.load(std::memory_order_acquire); }

// At the end of the library: destroyAll. While the process ends, nothing is done when a thread that is gone has the
// lock.
void endGlobalData() noexcept;

// For tests: how many buckets the table has.
u32 globalDataBuckets() noexcept;

}  // namespace corvix
