// IBSingleton: marks what there is one of. IBQuery: asks behind an object.
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

// An object that offers it is the same however often it is asked for.
class IBSingleton : public IBTransportable {
  CORVIX_IDENTITY(IBSingleton, 0x8616EC54, 0x04704231, 0x0B124C6C, 0xA197D451, IBTransportable)
};

// An object that answers for others: what cannot be asked of it may be asked through it.
class IBQuery : public IBTransportable {
  CORVIX_IDENTITY(IBQuery, 0xD365ACD1, 0x6AA1EA89, 0xDF86ABC0, 0x6B51280A, IBTransportable)

 public:
  // Adds no reference; null when nobody behind it offers the interface.
  virtual void* queryBehind(const stype_info& wanted) = 0;
};

}  // namespace corvix
