// AGDC: the context that draws through GDI+, and through GDI where GDI+ has nothing for it. The Graphics over the
// device context is made when needed and deleted before every GDI call, so that the two never hold the device at the
// same time.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/contexts/DrawingContext_p.h"
#include "graphics/gdiplus/ClipStack_p.h"
#include "graphics/gdiplus/Wrappers_p.h"

#include <optional>

namespace corvix {

class AGDC : public DrawingContext {
  CORVIX_IDENTITY(AGDC, 0x82B7F605, 0x4C3E91DA, 0x9F60D4B8, 0x3A57C21E, DrawingContext)

 public:
  static constexpr u32 kAccepted =
      capability::kOtherTarget | capability::kScreenTarget | capability::kGdiPlus | capability::kCommon;

  AGDC(DeviceHandle device, double width, double height);
  ~AGDC() override;

  // GDI+ could be started.
  bool isStarted() const noexcept { return static_cast<bool>(session_); }

  bool detach() override;
  DeviceHandle deviceContext() override;
  IAGDC* createDetached() override;
  bool canDraw() const noexcept override { return isAttached_ && session_; }
  u32 capabilities() const noexcept override { return kAccepted; }
  bool setOrigin(double x, double y) override;
  bool setDeviceMiterLimit(double) override { return false; }
  bool setLineJoin(i32 join) override;
  bool setMiterLimit(double limit) override;
  bool selectPen() override;
  bool selectHairlinePen() override;
  bool selectGeometricPen() override { return true; }
  bool clear() override;
  bool drawRectangle(double x, double y, double width, double height) override;
  bool fillRect(double x, double y, double width, double height) override;
  bool patternRectPixel(i32, i32, i32, i32, const u8*) override { return false; }
  bool patternRect(double, double, double, double, const u8*) override { return false; }

  bool clipRect(double x, double y, double width, double height) override;
  bool excludeRect(double x, double y, double width, double height) override;
  bool clipRegion(RegionHandle region) override;
  bool resetClip() override;
  bool saveClip() override;
  bool restoreClip() override;
  bool setClipRegion(RegionHandle region) override;
  RegionHandle copyClipRegion() override;
  i32 savedClipCount() const noexcept override { return clips_.savedCount(); }
  bool clipBounds(Box* bounds) override;
  bool isClipEmpty() override;
  bool isPointVisible(double x, double y) override;
  bool isRectVisible(double x, double y, double width, double height) override;

  bool drawImageThroughMemory(IAGImage* image, i32 x, i32 y) override { return drawImagePixel(image, x, y); }
  bool drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) override;
  bool drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                         i32 count) override;

  bool arcPixel(const PixelBox&, i32, i32, i32, i32) override { return false; }
  bool arc(double, double, double, double, double, double) override { return false; }
  bool ellipsePixel(const PixelBox&) override { return false; }
  bool ellipse(double, double, double, double) override { return false; }
  bool fillEllipse(double, double, double, double) override { return false; }

  bool setTransform(const Matrix& userToDevice) override;
  bool multiplyTransform(const Matrix& first) override { return setTransform(first.then(transform_)); }
  bool resetTransform() override { return setTransform({}); }
  i32 setSmoothing(i32 level) override;
  i32 setInterpolation(i32 level) override;
  i32 smoothing() const noexcept override;
  i32 interpolation() const noexcept override;

 protected:
  bool take(DeviceHandle device, double width, double height) override;
  void beginGdi() noexcept override;
  void lineStateChanged() noexcept override { isPenStale_ = true; }
  void colorsChanged() noexcept override;
  HRGN deviceClip() noexcept override;
  bool drawsEachPixel() const noexcept override { return attributes_ != nullptr; }
  HRGN clipBesideDevice() noexcept override { return deviceClip(); }
  double greatestCoordinate() const noexcept override;
  bool cutsDashes() const noexcept override;
  bool drawsThinLinesOnly() const noexcept override { return isHairline_; }
  bool readyToStroke(bool isCut) override;
  bool readyToFill() override;
  bool strokeOut(const Path& path, bool isCut) override;
  bool fillOut(const Path& path) override;
  bool clipOut(const Path& path) override;
  bool clipStrokeOut(const Path& path, bool isCut) override;
  bool lineOut(Point from, Point to) override;
  bool imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) override;
  bool turnedOut(const ImageBits& bits, ImageTurn turn, const Matrix& unitToDevice, bool smooth) override;

 private:
  enum class World { Plain, User };  // from the origin, or the user transform before that

  // Points on their way into a GDI+ path.
  struct WorkBuffer {
    u32 count;
    u32 unused;
    Gdiplus::PointF points[128];
  };
  static_assert(sizeof(WorkBuffer) == 1032);

  bool prepare() noexcept;
  void takeBack() noexcept;
  void applyWorld() noexcept;
  bool useWorld(World world) noexcept;
  bool preparePen(bool isSolid) noexcept;
  void setDashes(Gdiplus::GpPen* pen, double width, bool isSolid) noexcept;
  Gdiplus::GpPath* emptyPath() noexcept;
  bool tracePath(const Path& path, const Matrix* matrix) noexcept;
  bool clipChanged(bool isDone) noexcept;
  bool clipByNative() noexcept;
  bool clipNothing() noexcept;
  bool drawBitmap(const ImageBits& bits, const Matrix& unitToDevice, bool smooth);
  Gdiplus::InterpolationMode modeOf(bool smooth) const noexcept;
  bool drawWith(IAGImage* image, const PixelBox& box, const gdiplus::OwnedAttributes& attributes);

  gdiplus::Session session_;  // goes last
  HeapBuffer<WorkBuffer> work_;
  gdiplus::OwnedMatrix matrix_;
  gdiplus::OwnedPen pen_;
  gdiplus::OwnedBrush brush_;
  gdiplus::OwnedPath native_;  // for what is drawn or clipped by at the moment
  gdiplus::ClipStack clips_;
  gdi::Region onDevice_;                // the clip in device pixels; made when asked for
  std::optional<gdi::ClipScope> lent_;  // while the caller draws on the device context, its clip and origin are ours
  gdiplus::OwnedGraphics graphics_;
  Gdiplus::SmoothingMode smoothing_ = Gdiplus::SmoothingModeHighSpeed;
  Gdiplus::InterpolationMode interpolation_ = Gdiplus::InterpolationModeNearestNeighbor;
  Gdiplus::GpImageAttributes* attributes_ = nullptr;  // of the image that is drawn at the moment
  World world_ = World::Plain;
  bool isPrepared_ = false;
  bool isPenStale_ = false;
  bool isPenSolid_ = true;
  bool isPenSmart_ = false;
  bool isHairline_ = false;
};

}  // namespace corvix
