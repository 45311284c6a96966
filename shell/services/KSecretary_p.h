#pragma once

#include "core/baselib/objects/Ref.h"
#include "shell/Shell.h"
#include "shell/services/EncryptionKey.h"
#include "shell/services/KReport_p.h"
#include "shell/services/Secretary.h"

#include <string>
#include <vector>

namespace corvix {

class KEncryptionKey final : public BSmartObject, public IBEncryptionKey {
  CORVIX_IDENTITY(KEncryptionKey, 0xA2C6F01B, 0x5E79D384, 0x0B1FE6C2, 0x93D857A4, BSmartObject, IBEncryptionKey)

 public:
  explicit KEncryptionKey(const wchar_t* text);
  ~KEncryptionKey() override;
  KEncryptionKey(const KEncryptionKey&) = delete;
  KEncryptionKey& operator=(const KEncryptionKey&) = delete;

  const u8* bytes() const noexcept override { return bytes_.data(); }
  u32 sizeBytes() const noexcept override { return static_cast<u32>(bytes_.size()); }

 private:
  std::vector<u8> bytes_;  // never grows: nothing of it is left elsewhere
};

class KSecretary final : public BSmartObject, public IBSecretary {
  CORVIX_IDENTITY(KSecretary, 0x4F1D98E3, 0xC60A27B5, 0x78E3419D, 0x2B95F06C, BSmartObject, IBSecretary)

 public:
  static constexpr std::size_t kMostKeys = 64;

  // The shell outlives this.
  explicit KSecretary(IShell& shell) : shell_(shell) {}

  IBReport* report() override { return report_.get(); }
  IBSmartObject* keyFor(const wchar_t* location, i32 attempt) override;
  void forget(const wchar_t* location) noexcept override;

 private:
  struct Known {
    std::wstring location;
    Ref<KEncryptionKey> key;
  };

  Ref<KEncryptionKey> ask(const wchar_t* location, i32 attempt);

  IShell& shell_;
  Ref<KReport> report_ = make<KReport>();
  std::vector<Known> known_;  // the newest last
};

}  // namespace corvix
