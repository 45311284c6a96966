// Keys of the registry, owned. Failures are answered by an empty key, an empty text or false; nothing throws.
#pragma once

#include "core/baselib/Api.h"
#include "core/baselib/system/OwningHandle.h"
#include "core/baselib/text/WideString.h"

#include <optional>

#include <windows.h>

namespace corvix {

struct CloseRegistryKey {
  using Handle = HKEY;
  static Handle none() noexcept { return nullptr; }
  static void close(Handle handle) noexcept { RegCloseKey(handle); }
};
using RegistryKey = OwningHandle<CloseRegistryKey>;

RegistryKey openRegistryKey(HKEY root, const wchar_t* path, REGSAM access) noexcept;
RegistryKey createRegistryKey(HKEY root, const wchar_t* path, REGSAM access) noexcept;

// Up to the first zero, terminated in the registry or not. Empty when the value is missing, is no string, or is
// longer than a mebibyte.
WideString readRegistryText(const RegistryKey& key, const wchar_t* name);

// Nothing when the value is missing or no double word.
std::optional<u32> readRegistryNumber(const RegistryKey& key, const wchar_t* name) noexcept;

bool writeRegistryText(const RegistryKey& key, const wchar_t* name, const WideString& text) noexcept;

}  // namespace corvix
