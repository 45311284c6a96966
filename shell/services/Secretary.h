// IBSecretary: keeps the reports of work that runs unseen. Nothing here adds a reference. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBReport;

class IBSecretary : public IBTransportable {
  CORVIX_IDENTITY(IBSecretary, 0xBBBB288B, 0x1C487059, 0xAF20135A, 0x196B5E60, IBTransportable)

 public:
  virtual IBReport* report() = 0;
};

}  // namespace corvix
