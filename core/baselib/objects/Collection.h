// IBCollection: a counted list of objects that may change while it is held.
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IBCollection : public BSmartObject {
  CORVIX_IDENTITY(IBCollection, 0x84D7A1F6, 0x49C0E35B, 0xBD620C97, 0x13F8E42A, BSmartObject)

 public:
  virtual i32 count() const noexcept = 0;

  // `index` is from 0; null outside the list. Adds no reference.
  virtual IBTransportable* item(i32 index) const noexcept = 0;
};

}  // namespace corvix
