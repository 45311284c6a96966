// Remembers who was destroyed while it watched.
#pragma once

#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/text/WideString.h"

namespace example {

class IWitness : public corvix::IBTransportable {
  CORVIX_IDENTITY(IWitness, 0x08E5A37D, 0x46C19BF0, 0xB5D4720E, 0xF91A6C38, corvix::IBTransportable)

 public:
  // Watches one object, on which no reference is kept.
  virtual void watch(corvix::IBSmartObject* object) = 0;

  // The class of the object that went last; empty if none has.
  virtual corvix::WideString lastSeen() const = 0;

  // How many objects that it watched have gone.
  virtual corvix::u32 count() const = 0;
};

}  // namespace example
