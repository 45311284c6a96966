#pragma once

#include <string>

namespace corvix {

// The key below HKEY_CURRENT_USER that holds everything that the running program keeps: named after the
// executable's full path, with "/" for each "\". Computed once.
const std::wstring& applicationKeyPath();

}  // namespace corvix
