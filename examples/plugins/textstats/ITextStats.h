// Two interfaces of one object: text goes in through one, figures come out of the other.
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace example {

class ITextSink : public corvix::IBTransportable {
  CORVIX_IDENTITY(ITextSink, 0x91C3E7A4, 0x4B5D208F, 0xA7E61F39, 0x0D842B6C, corvix::IBTransportable)

 public:
  virtual void write(const wchar_t* text) = 0;
};

class ITextStats : public corvix::IBTransportable {
  CORVIX_IDENTITY(ITextStats, 0xE20B95D6, 0x4189C7F3, 0x8FA23C60, 0x7145DE9B, corvix::IBTransportable)

 public:
  virtual corvix::u32 words() const = 0;
  virtual corvix::u32 letters() const = 0;
};

}  // namespace example
