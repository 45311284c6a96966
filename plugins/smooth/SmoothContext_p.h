// SmoothContext: draws everything itself, with coverage, into 32 bits in memory. What it shares with the library's
// contexts (forms of operations, paths, images, the user's settings) is compiled into this module from their sources.
// Over a device context of somebody else's it draws into a picture of that, and copies what changed whenever the device
// is needed: `deviceContext`, GDI's own operations, `detach`, the end.
#pragma once

#include "graphics/IAGDCCreator.h"
#include "graphics/Tiles.h"
#include "graphics/contexts/DrawingContext_p.h"
#include "graphics/contexts/OffscreenBitmap_p.h"
#include "plugins/smooth/Stroker_p.h"
#include "plugins/smooth/Tiles_p.h"

#include <optional>

namespace corvix::smooth {

class SmoothContext final : public DrawingContext, public IAGShading, public IAGBlending, public IAGTiles {
  CORVIX_IDENTITY(SmoothContext, 0x8E4A17D5, 0x4B60C92F, 0xA3F1580E, 0x6CD92B74, DrawingContext, IAGShading,
                  IAGBlending, IAGTiles)

 public:
  static constexpr u32 kOffered = capability::kCommon | capability::kGdiPlus;
  static constexpr i32 kMostGroups = 64;

  // With a device context, or neither, the context draws on that; else into a bitmap of its own.
  SmoothContext(bool isMemory, DeviceHandle device, double width, double height);
  ~SmoothContext() override;

  BitmapHandle bitmap() const noexcept override { return own_.bitmap(); }
  bool detach() override;
  IAGDC* createDetached() override;
  DeviceHandle deviceContext() override;
  u32 capabilities() const noexcept override;
  bool setOrigin(double x, double y) override;
  bool setDeviceMiterLimit(double) override { return false; }
  IAGImage* createImage(i32 width, i32 height, ColorModel model, i32 bitsPerPixel) override;
  bool setStrokeColor(Color color) override;
  bool setFillColor(Color color) override;

  bool selectPen() override { return selectPenKind(false); }
  bool selectHairlinePen() override { return selectPenKind(true); }
  bool selectGeometricPen() override { return true; }
  bool clear() override;
  bool drawRectangle(double x, double y, double width, double height) override;
  bool fillRect(double x, double y, double width, double height) override;
  bool patternRectPixel(i32 x, i32 y, i32 width, i32 height, const u8* pattern) override;
  bool patternRect(double x, double y, double width, double height, const u8* pattern) override;
  bool xorRect(const PixelBox& box) override { return layers_.empty() && DrawingContext::xorRect(box); }
  bool focusRect(const PixelBox& box) override { return layers_.empty() && DrawingContext::focusRect(box); }
  bool copyTo(DeviceHandle device, i32 x, i32 y) override;

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

  bool drawImageOffscreen(IAGImage* image, i32 x, i32 y, i32 width, i32 height) override;
  bool drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) override;
  bool drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                         i32 count) override;

  bool arcPixel(const PixelBox& box, i32 startX, i32 startY, i32 endX, i32 endY) override;
  bool arc(double centerX, double centerY, double radiusX, double radiusY, double start, double sweep) override;
  bool ellipsePixel(const PixelBox& box) override;
  bool ellipse(double centerX, double centerY, double radiusX, double radiusY) override;
  bool fillEllipse(double centerX, double centerY, double radiusX, double radiusY) override;

  bool supportsText() const noexcept override { return true; }
  bool supportsBlending() const noexcept override { return true; }
  bool supportsShading() const noexcept override { return true; }
  bool setTransform(const Matrix& userToDevice) override;
  bool multiplyTransform(const Matrix& first) override { return setTransform(first.then(transform_)); }
  bool resetTransform() override { return setTransform({}); }
  i32 setSmoothing(i32 level) override { return smoothing_ = stepOf(level); }
  i32 setInterpolation(i32 level) override { return interpolation_ = stepOf(level); }
  i32 smoothing() const noexcept override { return smoothing_; }
  i32 interpolation() const noexcept override { return interpolation_; }
  bool paintCoverage(const u8* coverage, i32 strideBytes, const PixelBox& place) override;

  bool setAxialPaint(PaintUse use, const Point& from, const Point& to, const ColorStop* stops, i32 count,
                     u32 extend) override;
  bool setRadialPaint(PaintUse use, const Point& fromCenter, double fromRadius, const Point& toCenter, double toRadius,
                      const ColorStop* stops, i32 count, u32 extend) override;
  bool setTilePaint(PaintUse use, IAGImage* tile, const Matrix& unitToUser) override;
  bool paintAll() override;

  bool setOpacity(double opacity) override;
  double opacity() const noexcept override { return look_.opacity; }
  bool setBlendMode(BlendMode mode) override;
  BlendMode blendMode() const noexcept override { return look_.mode; }
  bool setSoftMask(IAGImage* image, const Matrix& unitToUser, MaskBy by) override;
  bool beginGroup() override;
  bool endGroup() override;
  bool endGroupAsMask(MaskBy by, Color backdrop) override;
  i32 groupDepth() const noexcept override { return static_cast<i32>(layers_.size()); }

  bool beginTiles(i32 threads) override;
  bool endTiles() override;

 protected:
  bool take(DeviceHandle device, double width, double height) override;
  void beginGdi() noexcept override;
  void lineStateChanged() noexcept override {}
  void colorsChanged() noexcept override {}
  PixelMemory beginPixels() noexcept override;
  HRGN deviceClip() noexcept override;
  HRGN clipBesideDevice() noexcept override { return deviceClip(); }
  double greatestCoordinate() const noexcept override { return 1e15; }
  bool cutsDashes() const noexcept override { return true; }
  bool drawsThinLinesOnly() const noexcept override { return isHairline_; }
  bool readyToStroke(bool) override { return prepare(); }
  bool readyToFill() override { return prepare(); }
  bool strokeOut(const Path& path, bool isCut) override;
  bool fillOut(const Path& path) override;
  bool clipOut(const Path& path) override;
  bool clipStrokeOut(const Path& path, bool isCut) override;
  bool lineOut(Point from, Point to) override;
  bool imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) override;
  bool turnedOut(const ImageBits& bits, ImageTurn turn, const Matrix& unitToDevice, bool smooth) override;

 private:
  // From the origin's whole pixel; within a group never wider than it.
  struct Clip {
    bool isNarrow = false;
    PixelBox box = {0, 0, 0, 0};
    SharedMask mask;  // null: all of the box
  };
  struct Look {
    double opacity = 1;
    BlendMode mode = BlendMode::Normal;
    SharedMask mask;  // null: none; from the origin's whole pixel
  };
  // A group, and what it will go back to.
  struct Layer {
    HeapVector<Pixel> pixels;
    PixelBox box;
    Clip clip;
    HeapVector<Clip> saved;
    Look look;
  };

  static i32 stepOf(i32 level) noexcept;
  bool isSmooth() const noexcept { return smoothing_ != 0 && smoothing_ != 128; }
  bool selectPenKind(bool isHairline) noexcept;

  // The pixels can be written: those of the device are there, and GDI has done what it was told.
  bool prepare() noexcept;
  void takeBack() noexcept;
  void showChanges() noexcept;
  PixelBox outputBox() const noexcept;
  Surface base() const noexcept;
  Surface surface() const noexcept;
  void wholeOrigin(i32& x, i32& y) const noexcept;
  PixelBox clipBox() const noexcept;  // in device pixels, within the surface
  PlacedMask placed(const SharedMask& mask) const noexcept;

  Painter::How how(Color color, const SharedPaint& paint) const noexcept;
  // A path as figures, as far as it may be seen in the clip. These throw std::bad_alloc.
  void trace(const Path& path, const PixelBox& clip);
  void traceStroke(const Path& path, const PixelBox& clip);
  double penWidth() const noexcept;
  // The figures, or a box of whole pixels: now, or once what is collected is drawn. These throw std::bad_alloc.
  bool paintFigures(const Painter::How& how, FillRule rule);
  bool paintBox(const Painter::How& how, const PixelBox& box);
  bool wasCollected(const Painter::How& how) noexcept;
  bool drawTiles() noexcept;  // before pixels are read or written in another way
  void changed(const PixelBox& box) noexcept;

  void clipChanged() noexcept { onDevice_.reset(); }
  bool isOnPixels(double x, double y, double width, double height, PixelBox& box) const noexcept;
  Clip wholeClip() const noexcept;
  void narrow(const PixelBox& box);  // from the origin's whole pixel
  // By the figures, or all but them. These throw std::bad_alloc.
  void narrowByFigures(FillRule rule, bool isInside);
  SharedMask maskOf(HRGN region, PixelBox& box) const;

  bool drawRecolored(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const Recolor& recolor);
  Filter filter(bool smooth) const noexcept;
  bool setPaint(PaintUse use, SharedPaint paint) noexcept;
  bool addEllipse(Path& path, double centerX, double centerY, double radiusX, double radiusY, double start,
                  double sweep) const;
  void closeGroup();  // what was before counts again; its pixels are in `closed_`

  bool isMemory_;
  bool isHairline_ = false;
  bool isStale_ = true;  // the picture of the device
  bool mayGdiHaveDrawn_ = false;
  i32 smoothing_ = 255;
  i32 interpolation_ = 192;
  OffscreenBitmap own_;
  OffscreenBitmap picture_;
  PixelBox changed_ = {0, 0, 0, 0};
  std::optional<gdi::ClipScope> lent_;  // while the caller draws by GDI
  Clip clip_;
  HeapVector<Clip> saved_;
  gdi::Region onDevice_;
  Look look_;
  SharedPaint paints_[2];  // of fills and strokes; null: their colours
  HeapVector<Layer> layers_;
  Layer closed_;
  Figures figures_;
  Rasterizer rasterizer_;
  Painter::Rows rows_;
  Tiles tiles_;
  bool isTileLost_ = false;  // some of what was collected was not drawn
};

}  // namespace corvix::smooth
