// IAGBlending: how what is drawn is put together with what is there. A context that has it answers true to
// `supportsBlending`; find it by query<IAGBlending>(context). Everything that is drawn obeys it, images and text
// included, but for single pixels, frames that invert and what the caller draws by GDI. `detach` ends all of it.
// [the context's thread]
#pragma once

#include "graphics/Geometry.h"
#include "graphics/Image.h"

namespace corvix {

// The separable modes of PDF; any other number counts as Normal.
enum class BlendMode : i32 {
  Normal,
  Multiply,
  Screen,
  Overlay,
  Darken,
  Lighten,
  ColorDodge,
  ColorBurn,
  HardLight,
  SoftLight,
  Difference,
  Exclusion,
};

// What of a picture makes a mask: how light it is (black: nothing is seen), or its alpha.
enum class MaskBy : i32 { Luminosity, Alpha };

class IAGBlending : public IBTransportable {
  CORVIX_IDENTITY(IAGBlending, 0x3B6F0D92, 0x4C71E8A5, 0xB0299F6D, 0x5E84C137, IBTransportable)

 public:
  // From 0 to 1, on top of the colours' own alpha; 1 at first. False for others.
  virtual bool setOpacity(double opacity) = 0;
  virtual double opacity() const noexcept = 0;
  virtual bool setBlendMode(BlendMode mode) = 0;
  virtual BlendMode blendMode() const noexcept = 0;

  // What is drawn from now on shows by as much as the mask says where it is placed, and not at all elsewhere. The
  // image is read at once; the mask moves with the origin. Null: no mask. False, with the mask as it was, for an image
  // or a matrix that cannot be used.
  virtual bool setSoftMask(IAGImage* image, const Matrix& unitToUser, MaskBy by) = 0;

  // Between these, drawing goes into a transparent picture of its own, as large as the clip: with a clip, a mask, an
  // opacity and a mode of its own, which begin as none. `endGroup` brings back what was and draws the picture by it;
  // `endGroupAsMask` makes the soft mask of it instead, on `backdrop` for Luminosity, which also counts outside the
  // picture. Groups nest, at most 64 deep; what is open when the context is detached is dropped. While one is open,
  // `deviceContext` is null and nothing is drawn through GDI.
  virtual bool beginGroup() = 0;
  virtual bool endGroup() = 0;
  virtual bool endGroupAsMask(MaskBy by, Color backdrop) = 0;
  virtual i32 groupDepth() const noexcept = 0;
};

}  // namespace corvix
