#pragma once

#include "core/baselib/system/ForeignCall.h"

#include <string>

namespace corvix {

// Inside a catch block: what the exception says.
std::wstring textOfThrown();

// False when the module that an address belonged to has left the process. Takes none of the system's locks.
bool isCode(const void* address) noexcept;

}  // namespace corvix
