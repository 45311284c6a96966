// Foreign calls without a log and without modules; a process that does not end.
#include "core/baselib/system/ForeignCall_p.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/system/ProcessEnd_p.h"

namespace corvix {

void logThrown(const void*, const wchar_t*) noexcept {}
bool isCode(const void* address) noexcept { return address; }
bool isProcessEnding() noexcept { return false; }
void sWriteLog(const wchar_t*, ...) {}

}  // namespace corvix
