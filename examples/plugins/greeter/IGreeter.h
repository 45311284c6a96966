// What the greeter plug-in offers to those who use it.
#pragma once

#include "core/baselib/objects/Transportable.h"
#include "core/baselib/text/WideString.h"

namespace example {

class IGreeter : public corvix::IBTransportable {
  CORVIX_IDENTITY(IGreeter, 0x3A7C59E1, 0x4D02B86F, 0x91F4A3C7, 0x60D8E52B, corvix::IBTransportable)

 public:
  virtual corvix::WideString greeting(const wchar_t* whom) const = 0;
};

}  // namespace example
