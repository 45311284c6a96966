// What is painted with, apart from one colour: gradients, tiles, images, the pictures of groups.
#pragma once

#include "graphics/Shading.h"
#include "plugins/smooth/Rasterizer_p.h"

namespace corvix::smooth {

class PaintSource {
 public:
  virtual ~PaintSource() = default;
  // `count` pixels in a row; `at` is the middle of the first, in device pixels without the origin.
  virtual void read(Point at, i32 count, Pixel* to) noexcept = 0;
};

// The colours between stops, in steps.
class ColorRamp {
 public:
  // Empty when the stops are none. Throws std::bad_alloc.
  bool make(const ColorStop* stops, i32 count, u32 extend);
  // From 0 to 1; beyond it what extends; nothing where there is no number.
  Pixel at(double offset) const noexcept;
  bool reaches(double offset) const noexcept {
    if (std::isnan(offset)) return false;
    return (offset >= 0 || extend_ & kExtendStart) && (offset <= 1 || extend_ & kExtendEnd);
  }
  bool reachesAll() const noexcept { return extend_ == (kExtendStart | kExtendEnd); }

 private:
  static constexpr u32 kSteps = 1024;
  HeapVector<Pixel> pixels_;
  u32 extend_ = 0;
};

class AxialPaint final : public PaintSource {
 public:
  AxialPaint(ColorRamp ramp, Point from, Point to, const Matrix& userToDevice) noexcept;
  void read(Point at, i32 count, Pixel* to) noexcept override;

 private:
  ColorRamp ramp_;
  double perX_, perY_, base_;
};

class RadialPaint final : public PaintSource {
 public:
  RadialPaint(ColorRamp ramp, Point from, double fromRadius, Point to, double toRadius,
              const Matrix& userToDevice) noexcept
      : ramp_(std::move(ramp)),
        back_(userToDevice.inverse()),
        from_(from),
        radius_(fromRadius),
        across_{to.x - from.x, to.y - from.y},
        grow_(toRadius - fromRadius) {}
  void read(Point first, i32 count, Pixel* to) noexcept override;

 private:
  Pixel at(Point device) const noexcept;

  ColorRamp ramp_;
  Matrix back_;
  Point from_;
  double radius_;
  Point across_;
  double grow_;
};

enum class Filter { Nearest, Linear, Cubic };

// A picture in memory, by a matrix from device pixels to its own. Beyond its border are the pixels at the border, or it
// is repeated.
class SampledPaint final : public PaintSource {
 public:
  struct Picture {
    const Pixel* pixels;
    std::ptrdiff_t stride;
    PixelBox box;  // those that are there, in its own pixels
  };
  SampledPaint(HeapVector<Pixel> own, const Picture& picture, const Matrix& deviceToPicture, Filter filter,
               bool isRepeated) noexcept;
  void read(Point at, i32 count, Pixel* to) noexcept override;

 private:
  const Pixel* row(i32 y) const noexcept;
  i32 column(i32 x) const noexcept;
  Pixel nearest(Point at) const noexcept;
  Pixel linear(Point at) const noexcept;
  Pixel cubic(Point at) const noexcept;

  HeapVector<Pixel> own_;
  Picture picture_;
  Matrix matrix_;
  Filter filter_;
  bool isRepeated_;
};

// Eight rows of eight bits, from the device's corner.
class PatternPaint final : public PaintSource {
 public:
  PatternPaint(const u8* rows, Pixel zero, Pixel one, Point origin) noexcept
      : rows_(rows), pixels_{zero, one}, origin_(origin) {}
  void read(Point at, i32 count, Pixel* to) noexcept override;

 private:
  const u8* rows_;
  Pixel pixels_[2];
  Point origin_;
};

}  // namespace corvix::smooth
