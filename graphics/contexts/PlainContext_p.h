// AGDCPlain: the context that draws with GDI alone. What it changes on the device context is undone by `detach`.
#pragma once

#include "graphics/IAGDCCreator.h"
#include "graphics/contexts/DrawingContext_p.h"

#include <memory>

namespace corvix {

class AGDCPlain : public DrawingContext {
  CORVIX_IDENTITY(AGDCPlain, 0x58C2E1B7, 0x4D90A36F, 0xB3F4720C, 0x1E6D9A85, DrawingContext)

 public:
  static constexpr u32 kAccepted = capability::kOtherTarget | capability::kScreenTarget | capability::kCommon;

  AGDCPlain(DeviceHandle device, double width, double height);
  ~AGDCPlain() override;

  bool detach() override;
  IAGDC* createDetached() override;
  u32 capabilities() const noexcept override { return kAccepted; }
  bool setOrigin(double x, double y) override;
  bool setDeviceMiterLimit(double limit) override;
  bool moveTo(double x, double y) override;
  bool selectPen() override;
  bool selectHairlinePen() override;
  bool selectGeometricPen() override;
  bool clear() override;
  bool drawRectangle(double, double, double, double) override { return false; }
  bool line(double x1, double y1, double x2, double y2) override;
  bool fillRect(double x, double y, double width, double height) override;
  bool patternRectPixel(i32 x, i32 y, i32 width, i32 height, const u8* pattern) override;
  bool patternRect(double x, double y, double width, double height, const u8* pattern) override;

  bool clipRect(double x, double y, double width, double height) override;
  bool excludeRect(double x, double y, double width, double height) override;
  bool clipRegion(RegionHandle region) override;
  bool resetClip() override;
  bool saveClip() override;
  bool restoreClip() override;
  bool setClipRegion(RegionHandle region) override;
  RegionHandle copyClipRegion() override;
  i32 savedClipCount() const noexcept override { return static_cast<i32>(saved_.size()); }
  bool clipBounds(Box* bounds) override;
  bool isClipEmpty() override;
  bool isPointVisible(double x, double y) override;
  bool isRectVisible(double x, double y, double width, double height) override;

  bool drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) override;
  bool drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                         i32 count) override;

  bool arcPixel(const PixelBox& box, i32 startX, i32 startY, i32 endX, i32 endY) override;
  bool arc(double centerX, double centerY, double radiusX, double radiusY, double start, double sweep) override;
  bool ellipsePixel(const PixelBox& box) override;
  bool ellipse(double centerX, double centerY, double radiusX, double radiusY) override;
  bool fillEllipse(double centerX, double centerY, double radiusX, double radiusY) override;

  bool setTransform(const Matrix&) override { return false; }
  bool multiplyTransform(const Matrix&) override { return false; }
  bool resetTransform() override { return false; }
  i32 setSmoothing(i32) override { return 0; }
  i32 setInterpolation(i32) override { return 0; }
  i32 smoothing() const noexcept override { return 0; }
  i32 interpolation() const noexcept override { return 0; }

 protected:
  bool take(DeviceHandle device, double width, double height) override;
  void lineStateChanged() noexcept override { isPenStale_ = true; }
  void colorsChanged() noexcept override;
  HRGN deviceClip() noexcept override;
  double greatestCoordinate() const noexcept override { return gdi::kGreatest; }
  bool cutsDashes() const noexcept override;
  bool drawsThinLinesOnly() const noexcept override { return pen_.kind == PenKind::Hairline; }
  bool readyToStroke(bool isCut) override { return preparePen(isCut); }
  bool readyToFill() override { return prepareBrush(); }
  bool strokeOut(const Path& path, bool isCut) override;
  bool fillOut(const Path& path) override;
  bool clipOut(const Path& path) override;
  bool clipStrokeOut(const Path& path, bool isCut) override;
  bool lineOut(Point from, Point to) override;
  bool imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) override;
  bool turnedOut(const ImageBits& bits, ImageTurn turn, const Matrix& unitToDevice, bool smooth) override;

 private:
  enum class PenKind { FromLineState, Hairline, Geometric };
  struct PenState {
    PenKind kind = PenKind::FromLineState;
    bool isSolid = false;
    bool isSmart = false;
  };
  using SharedRegion = std::shared_ptr<gdi::Region>;  // from the origin; shared by the clip and the saved ones

  void takeOver() noexcept;
  bool preparePen(bool isSolid) noexcept;
  bool prepareBrush() noexcept;
  bool selectPenKind(PenKind kind) noexcept;
  bool tracePath(const Path& path) noexcept;  // into the device context's path
  bool intersect(gdi::Region region);
  bool combine(gdi::Region region, int mode);
  void applyClip() noexcept;
  // With a temporary pen, and the fill colour inside or nothing.
  bool ellipseIn(const RECT& box, bool isFilled) noexcept;
  bool drawRecolored(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const Recolor& recolor);
  bool arcIn(const RECT& box, POINT start, POINT end) noexcept;

  int savedState_ = 0;
  gdi::Region baseClip_;  // what the device context brought; null: nothing
  gdi::Region onDevice_;  // the context's clip in device pixels; made when asked for
  SharedRegion clip_;
  std::vector<SharedRegion> saved_;
  gdi::Pen penObject_;
  gdi::Brush brushObject_;
  PenState pen_;
  bool isPenStale_ = true;
  bool isBrushStale_ = true;
};

}  // namespace corvix
