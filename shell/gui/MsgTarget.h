// IMsgTarget: receives messages of the system's windows. Nothing here adds a reference. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IMsgTarget : public IBTransportable {
  CORVIX_IDENTITY(IMsgTarget, 0xB9A77AF0, 0x278DE3EC, 0xD3DA2F15, 0x3926C617, IBTransportable)

 public:
  // True when the message was taken; `result` is then what the system is answered.
  virtual bool onMessage(u32 message, std::uintptr_t wParam, std::intptr_t lParam, std::intptr_t& result) = 0;
};

}  // namespace corvix
