// What your plug-in offers. Give this header to those who use it.
#pragma once

#include "core/baselib/objects/Transportable.h"

class IMyInterface : public corvix::IBTransportable {
  // Take four new words for every class (xmlbinc --new-identifier): they are what tells it from all others.
  CORVIX_IDENTITY(IMyInterface, 0xC3A5F081, 0x4E279B6D, 0x86D01FE4, 0x5B7932AC, corvix::IBTransportable)

 public:
  virtual int twice(int number) const = 0;
};
