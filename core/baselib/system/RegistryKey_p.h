// RegistryKey: a key of the registry, owned. Reading takes nothing on trust: a value of another type or size
// than asked for is no value.
#pragma once

#include "core/baselib/Api.h"
#include "core/baselib/system/OwningHandle_p.h"
#include "core/baselib/text/WideString.h"

#include <optional>
#include <string>

#include <windows.h>

namespace corvix {

struct CloseRegistryKey : NullIsNone<HKEY> {
  static void close(HKEY handle) noexcept { RegCloseKey(handle); }
};
using RegistryHandle = OwningHandle<CloseRegistryKey>;

class RegistryKey {
 public:
  RegistryKey() noexcept = default;
  explicit RegistryKey(HKEY key) noexcept : key_(key) {}

  // Empty if it does not exist, must not be opened, or has a name that no key can have.
  static RegistryKey open(HKEY parent, const std::wstring& path, REGSAM access) noexcept;

  // Opens it too if it exists; `isNew` says whether it did not.
  static RegistryKey create(HKEY parent, const std::wstring& path, REGSAM access, bool* isNew = nullptr) noexcept;

  explicit operator bool() const noexcept { return static_cast<bool>(key_); }
  HKEY get() const noexcept { return key_.get(); }
  [[nodiscard]] HKEY release() noexcept { return key_.release(); }

  std::optional<u32> number(const wchar_t* name) const noexcept;
  bool setNumber(const wchar_t* name, u32 value) const noexcept;

  enum class Reading {
    Text,
    Missing,     // there is no such value
    Unreadable,  // there is one, but no string, one of more than a mebibyte, or one that the system does not give
  };

  // A string value up to its first zero, whether it is terminated or not; variables in it ("%TEMP%") stay as they are
  // written. `text` becomes empty when there is none.
  Reading readText(const wchar_t* name, WideString& text) const;
  WideString text(const wchar_t* name) const;

  // False, and what was there stays, if the text could not be read back: it is too long or holds a zero. A string with
  // variables stays one.
  bool setText(const wchar_t* name, const WideString& text) const noexcept;

  // The same where nobody can have stored another kind of string: the key is new.
  bool setNewText(const wchar_t* name, const WideString& text) const noexcept;

 private:
  bool setText(const wchar_t* name, const WideString& text, DWORD type) const noexcept;

  RegistryHandle key_;
};

// Where, under HKEY_CURRENT_USER, everything of an executable is kept.
std::wstring registryPathOf(const std::wstring& executable);

}  // namespace corvix
