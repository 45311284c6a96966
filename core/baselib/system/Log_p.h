// The log's life, which the library's own begins and ends.
#pragma once

#include <string>

namespace corvix {

// Opens the log of an executable if it is switched on for it, and writes the start line. Every failure
// leaves the log off. Nobody else writes meanwhile.
void openLog(const std::wstring& executable);

// Writes the end line and closes. The log is off from then on.
void closeLog();

std::wstring logPathOf(const std::wstring& executable);

}  // namespace corvix
