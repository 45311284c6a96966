#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/settings/Settings.h"
#include "shell/services/SelfReg.h"

#include <string>

namespace corvix {

// What it entered stands in the program's own key as "ApplicationBind": ".pdf=" and what was there before.
class KSelfReg final : public BSmartObject, public IBSelfReg, public ISettingListener {
  CORVIX_IDENTITY(KSelfReg, 0xE6073C5D, 0x18B4F29A, 0x5D90A7E4, 0xC3416B82, BSmartObject, IBSelfReg, ISettingListener)

 public:
  // The settings outlive it.
  explicit KSelfReg(IBSettings& settings);
  ~KSelfReg() override;
  KSelfReg(const KSelfReg&) = delete;
  KSelfReg& operator=(const KSelfReg&) = delete;

  bool registerSelf() override;
  bool unregisterSelf() override;
  int onSettingChanged(IBSettings& settings, const wchar_t* group, const wchar_t* item) override;

 private:
  IBSettings& settings_;
};

}  // namespace corvix
