// IAGStencils: masks that are painted in the fill colour, at any place; a side of drawing contexts, found by
// query<IAGStencils>(context). [the context's thread]
#pragma once

#include "graphics/Geometry.h"
#include "graphics/Image.h"

namespace corvix {

class IAGStencils : public IBTransportable {
  CORVIX_IDENTITY(IAGStencils, 0x5FD0B726, 0x4A9C13E8, 0x96E24B7D, 0xC8305A1F, IBTransportable)

 public:
  // The unit square becomes the mask, as with `IAGDC::drawImageTransformed`. An image of 1 bit paints where it is 1, a
  // grey one as much as it is light. The user's settings for images apply. False for other images, and where the
  // context answers false to drawing images.
  virtual bool drawMaskTransformed(IAGImage* mask, const Matrix& unitToUser) = 0;
};

}  // namespace corvix
