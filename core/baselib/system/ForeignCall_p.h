#pragma once

#include "core/baselib/system/ForeignCall.h"

#include <string>

namespace corvix {

// Inside a catch block: what the exception says.
std::wstring textOfThrown();

// The path of the module that an address belongs to; empty when it is none's.
std::wstring modulePathOf(const void* code);

// False when the module that an address belonged to has left the process. Takes none of the system's locks.
bool isCode(const void* address) noexcept;

}  // namespace corvix
