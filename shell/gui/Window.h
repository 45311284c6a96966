// IWindow: a window of the program, an HWND, which stays its own. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IWindow : public IBTransportable {
  CORVIX_IDENTITY(IWindow, 0x5B5B035E, 0xF87962AF, 0xE65AB9FB, 0x4E913729, IBTransportable)

 public:
  virtual void* windowHandle() const noexcept = 0;
  virtual void show(bool visible) = 0;
};

}  // namespace corvix
