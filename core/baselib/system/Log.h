// The diagnostic log: one file for each executable, named as it is with ".log" added, switched on for that
// executable in the registry. Off, a call costs a few nanoseconds and nothing else happens.
#pragma once

#include "core/baselib/text/WideString.h"

namespace corvix {

extern "C++" {

// Appends one entry. Formats are those of the system's printf: in the wide form %s takes a wide text, %hs a
// narrow one. Nothing is added, so end a line with "\n". The entry is written in one piece and is with the
// system when the call returns; what fails, a full disk included, is not told. Wide text is converted to the
// system's ANSI code page. A format that cannot be formatted is written as it stands. [any thread]
CORVIX_API void sWriteLog(const char* format, ...);
CORVIX_API void sWriteLog(const wchar_t* format, ...);

}  // extern "C++"

// The switch of the running executable for its next run: whether the next start of it opens the log.
CORVIX_API bool isLogSwitchedOn();
CORVIX_API bool switchLog(bool on);  // false if the registry does not let us

// The log of the running executable, whether there is one or not.
CORVIX_API WideString logPath();

}  // namespace corvix
