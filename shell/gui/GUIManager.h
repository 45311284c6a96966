// IGUIManager: what a program's user interface offers to plug-ins. The library has none of its own: a plug-in brings
// it, under the name "IGUIManager.Instance". Nothing here adds a reference. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IFrameWindow;

class IGUIManager : public IBTransportable {
  CORVIX_IDENTITY(IGUIManager, 0x81823C83, 0x024CB756, 0x8DAF0310, 0xB36D6716, IBTransportable)

 public:
  virtual IFrameWindow* mainWindow() const noexcept = 0;
};

}  // namespace corvix
