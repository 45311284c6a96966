// Settings of the shell that is tested go to a key that is removed at the end.
#include <gtest/gtest.h>

#include <string>

#include <windows.h>

namespace {

class OwnRegistry final : public testing::Environment {
 public:
  void SetUp() override {
    RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_, nullptr);
    RegOverridePredefKey(HKEY_CURRENT_USER, key_);
  }
  void TearDown() override {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegCloseKey(key_);
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  }

 private:
  const std::wstring path_ = L"Software\\CorvixTest" + std::to_wstring(GetCurrentProcessId());
  HKEY key_ = nullptr;
};

[[maybe_unused]] const testing::Environment* const environment = testing::AddGlobalTestEnvironment(new OwnRegistry);

}  // namespace
