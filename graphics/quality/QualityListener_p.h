// QualityListener: keeps the values of Quality.h as the settings of the group "Quality" say, from its making to its
// end.
#pragma once

#include "core/settings/Settings.h"

namespace corvix {

class QualityListener final : public ISettingListener {
  CORVIX_IDENTITY(QualityListener, 0x49E2B8F7, 0x4C70D13A, 0x85A69E2D, 0xD3170B54, ISettingListener)

 public:
  // Reads and watches the store, which must outlive the listener.
  explicit QualityListener(IBSettings& settings);
  ~QualityListener() override;

  int onSettingChanged(IBSettings& settings, const wchar_t* group, const wchar_t* item) override;

 private:
  IBSettings& settings_;
};

// The listener of the process, made by the first call; the store stays until the process ends.
void watchQuality(IBSettings& settings);

}  // namespace corvix
