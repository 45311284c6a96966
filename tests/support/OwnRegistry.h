// A registry of its own for a test: HKEY_CURRENT_USER leads into a key that is removed at the end.
#pragma once

#include "core/baselib/system/RegistryKey_p.h"

#include <string>

namespace corvix::testing_support {

class OwnRegistry {
 public:
  OwnRegistry() {
    path_ = L"Software\\CorvixTest" + std::to_wstring(GetCurrentProcessId());
    key_ = corvix::RegistryKey::create(HKEY_CURRENT_USER, path_, KEY_ALL_ACCESS);
    RegOverridePredefKey(HKEY_CURRENT_USER, key_.get());
  }
  ~OwnRegistry() {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    key_ = {};
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  }
  OwnRegistry(const OwnRegistry&) = delete;
  OwnRegistry& operator=(const OwnRegistry&) = delete;

 private:
  std::wstring path_;
  corvix::RegistryKey key_;
};

}  // namespace corvix::testing_support
