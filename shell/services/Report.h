// IBReport: takes the lines of a report on work that is done. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBReport : public IBTransportable {
  CORVIX_IDENTITY(IBReport, 0xD71094B5, 0xEE8736F9, 0x9C39E9A6, 0x97C86C7D, IBTransportable)

 public:
  virtual void addLine(const wchar_t* text) = 0;
};

}  // namespace corvix
