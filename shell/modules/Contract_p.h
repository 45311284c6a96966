// What one module may expect of another: versions, and the contract of the SDK that a module is made with.
// `corvix check` asks here, too.
#pragma once

#include <string>
#include <string_view>

namespace corvix {

// Below 0 when `a` is older. Numbers with dots between, of any length; what is missing, or no number, counts as 0.
int compareVersions(std::wstring_view a, std::wstring_view b) noexcept;

// What the build writes into the descriptor, as "SdkVersion", "SdkCompiler" and "SdkBits"; each may be empty.
struct SdkStamp {
  std::wstring_view version;
  std::wstring_view compiler;
  std::wstring_view bits;
};

// A sentence when this library cannot use a module of that stamp, else empty. What the stamp does not say fits.
std::wstring whyOtherContract(const SdkStamp& stamp);

}  // namespace corvix
