// A plug-in's share of a page. The host asks every module that declares "Example.PagePart".
#pragma once

#include "graphics/IAGDC.h"

namespace example {

class IPagePart : public corvix::IBTransportable {
  CORVIX_IDENTITY(IPagePart, 0xB1F60C27, 0x4EA3D985, 0x8F207B4C, 0x6D95E13A, corvix::IBTransportable)

 public:
  // Draws inside the box, through whatever kind of context it is. False when the context cannot do it.
  virtual bool drawPart(corvix::IAGDC& context, const corvix::Box& box) = 0;
};

}  // namespace example
