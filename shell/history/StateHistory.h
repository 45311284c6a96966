// IStateHistory: steps back and forth between states of what the user sees. A plug-in brings it, under the name
// "IStateHistory.GetInstance". [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IStateHistory : public IBTransportable {
  CORVIX_IDENTITY(IStateHistory, 0x68CCC7EE, 0xB6BE0257, 0xDFEA5BAE, 0xBD07FB12, IBTransportable)

 public:
  virtual bool canGoBack() const noexcept = 0;
  virtual bool canGoForward() const noexcept = 0;
  virtual bool goBack() = 0;
  virtual bool goForward() = 0;
};

}  // namespace corvix
