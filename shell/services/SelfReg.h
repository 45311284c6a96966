// IBSelfReg: enters itself where the system looks for it: file types, helpers of other programs. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBSelfReg : public IBTransportable {
  CORVIX_IDENTITY(IBSelfReg, 0x003BE43E, 0xAA7EEAC7, 0x9EB9FA08, 0x94C745EA, IBTransportable)

 public:
  virtual bool registerSelf() = 0;
  virtual bool unregisterSelf() = 0;
};

}  // namespace corvix
