// IMenuItem: one row of a menu. Texts are good as long as the object. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IMenuItem : public IBTransportable {
  CORVIX_IDENTITY(IMenuItem, 0xC447A503, 0xA7DF3A99, 0xD2EF20E6, 0x6027B32D, IBTransportable)

 public:
  virtual const wchar_t* text() const noexcept = 0;
  virtual const wchar_t* actionName() const noexcept = 0;  // "Actions." and words; empty for a sub-menu
};

}  // namespace corvix
