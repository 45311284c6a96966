// IView: what shows something in a window. Nothing here adds a reference. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IView : public IBTransportable {
  CORVIX_IDENTITY(IView, 0x102E0F4A, 0x0D92A9E6, 0xD3B0681A, 0x769E8F26, IBTransportable)

 public:
  virtual void update() = 0;  // what it shows has changed
};

}  // namespace corvix
