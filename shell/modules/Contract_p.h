// What one module may expect of another: versions, and the contract of the SDK that a module is made with.
// `corvix check` asks here, too.
#pragma once

#include "core/baselib/Api.h"

#include <string>
#include <string_view>

namespace corvix {

// Below 0 when `a` is older. Numbers with dots between, of any length; what is missing, or no number, counts as 0.
int compareVersions(std::wstring_view a, std::wstring_view b) noexcept;

// The processor that modules for this library are made for, as their headers say it.
constexpr u16 kMachineX86 = 0x014C, kMachineX64 = 0x8664;
#if defined(_WIN64)
constexpr u16 kOwnMachine = kMachineX64;
#else
constexpr u16 kOwnMachine = kMachineX86;
#endif

// The system's code of a C++ exception in 64 bits. Its loader stops one that leaves a module, with this as the error.
constexpr u32 kThrownCode = 0x20474343;

// A sentence that names a module's processor and this program's, where they differ.
std::wstring whyOtherMachine(u16 machine);

// What the build writes into the descriptor, as "SdkVersion", "SdkCompiler" and "SdkBits"; each may be empty.
struct SdkStamp {
  std::wstring_view version;
  std::wstring_view compiler;
  std::wstring_view bits;
};

// A sentence when this library cannot use a module of that stamp, else empty. What the stamp does not say fits.
std::wstring whyOtherContract(const SdkStamp& stamp);

}  // namespace corvix
