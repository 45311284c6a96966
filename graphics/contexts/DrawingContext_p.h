// DrawingContext: what the plain GDI and the GDI+ contexts share: the state that every operation reads, pixels, the
// path under construction and its clipping in software, and the forms of an operation that lead to another form.
#pragma once

#include "graphics/Stencils.h"
#include "graphics/contexts/LineState_p.h"
#include "graphics/gdi/Gdi_p.h"
#include "graphics/images/ImageBits_p.h"
#include "graphics/path/PathClip_p.h"
#include "graphics/text/TextTarget.h"

namespace corvix {

// The memory of a bitmap that a context owns; no pixels: it cannot be reached.
struct PixelMemory {
  u8* pixels = nullptr;
  i32 strideBytes = 0;
  i32 width = 0;
  i32 height = 0;
  i32 bytesPerPixel = 3;
};

class DrawingContext : public IAGDC, public ITextTarget, public IAGStencils {
  CORVIX_IDENTITY(DrawingContext, 0x7A35D0E8, 0x4C1968BF, 0xA2F7E40D, 0x91B36C5E, IAGDC, ITextTarget, IAGStencils)

 public:
  ~DrawingContext() override;

  BitmapHandle bitmap() const noexcept override { return nullptr; }
  bool attach(DeviceHandle device, double width, double height) override;
  bool detach() override;
  DeviceHandle acquireDevice(BitmapHandle bitmap) override;
  bool returnDevice(DeviceHandle device) override;
  bool canDraw() const noexcept override { return isAttached_; }
  double width() const noexcept override { return width_; }
  double height() const noexcept override { return height_; }
  DeviceHandle deviceContext() override;
  bool isAttached() const noexcept override { return isAttached_; }
  bool isNonDisplay() const noexcept override { return isNonDisplay_; }
  Point origin() const noexcept override { return origin_; }
  bool setOrigin(double x, double y) override;

  IAGImage* createImage(i32 width, i32 height, ColorModel model, i32 bitsPerPixel) override;
  bool setLineCap(i32 cap) override;
  bool setFillRule(FillRule rule) override;
  bool setBackgroundColor(Color color) override;
  bool setStrokeColor(Color color) override;
  bool setFillColor(Color color) override;
  Color strokeColor() const noexcept override { return strokeColor_; }
  Color fillColor() const noexcept override { return fillColor_; }
  Color backgroundColor() const noexcept override { return backgroundColor_; }
  Color nearestColor(Color color) override;
  bool readPixel(double x, double y, Color* color) override;
  bool setDash(const double* lengths, i32 count, double phase) override;
  i32 dash(double* lengths, i32 capacity, double* phase) const noexcept override;
  bool setLineWidth(double width) override;
  double lineWidth() const noexcept override { return line_.width; }
  bool setLineJoin(i32 join) override;
  bool setMiterLimit(double limit) override;

  bool moveToPixel(i32 x, i32 y) override;
  bool moveTo(double x, double y) override;
  bool dottedRow(i32 first, i32 end, i32 y, Color color1, Color color2) override;
  bool dottedColumn(i32 x, i32 first, i32 end, Color color1, Color color2) override;
  bool setPixel(i32 x, i32 y, Color color) override;
  bool setPixelAt(double x, double y, Color color) override;
  bool getPixel(i32 x, i32 y, Color* color) override;
  bool lineToPixel(i32 x, i32 y) override;
  bool lineTo(double x, double y) override;
  bool curveToPixel(i32 x1, i32 y1, i32 x2, i32 y2, i32 x, i32 y) override;
  bool curveTo(double x1, double y1, double x2, double y2, double x, double y) override;
  bool curvesTo(const Point* points, i32 count) override;
  bool linePixel(i32 x1, i32 y1, i32 x2, i32 y2) override;
  bool line(double x1, double y1, double x2, double y2) override;
  bool lines(const Point* points, i32 count) override;
  bool drawPath(PathPaint paint) override;
  bool rectangle(double x, double y, double width, double height) override;
  bool clipPath() override;
  bool clipStroke() override;
  bool clipPolygon(const Point* points, i32 count) override;
  bool clipRectPixel(const PixelBox& box) override;
  bool xorRect(const PixelBox& box) override;
  bool focusRect(const PixelBox& box) override;
  bool copyTo(DeviceHandle device, i32 x, i32 y) override;

  bool drawImage(IAGImage* image, double x, double y, double width, double height) override;
  bool drawImagePart(IAGImage* image, const PixelBox& part, double x, double y, double width, double height) override;
  bool drawImagePixel(IAGImage* image, i32 x, i32 y) override;
  bool drawImageOffscreen(IAGImage* image, i32 x, i32 y, i32 width, i32 height) override;
  bool drawImageTransformed(IAGImage* image, const Matrix& unitToUser) override;
  bool drawImageTurned(IAGImage* image, i32 x, i32 y, i32 width, i32 height, ImageTurn turn) override;
  bool drawImageThroughMemory(IAGImage* image, i32 x, i32 y) override;
  bool drawImageMask(IAGImage* image, i32 x, i32 y, i32 width, i32 height) override;

  bool drawMaskTransformed(IAGImage* mask, const Matrix& unitToUser) override;

  i32 deviceCapability(i32 index) override;
  bool unsupported() override { return false; }
  bool strokePolyline(const Point* points, i32 count) override;
  bool supportsText() const noexcept override { return false; }
  bool supportsBlending() const noexcept override { return false; }
  bool supportsShading() const noexcept override { return false; }
  bool userToDevice(Point* points, i32 count) const noexcept override;
  bool deviceToUser(Point* points, i32 count) const noexcept override;
  Point currentPoint() const noexcept override { return current_; }
  bool beginPath() override;
  bool closePath() override;
  bool flattenPath() override;
  bool endPath() override;

  Matrix textTransform() const noexcept override { return transform_; }
  Box visibleArea() const noexcept override;
  bool paintCoverage(const u8* coverage, i32 strideBytes, const PixelBox& place) override;
  IGlyphSink& shape() override { return shape_; }
  bool fillShape() override;
  bool clipShape() override;

 protected:
  DrawingContext(DeviceHandle device, double width, double height);
  void readBaseOrigin() noexcept;

  // Of `attach`, when its arguments are good; a memory context's own bitmap may have a negative size.
  virtual bool take(DeviceHandle device, double width, double height);

  // Before every GDI call on the device context: what holds it lets go.
  virtual void beginGdi() noexcept {}
  virtual void lineStateChanged() noexcept = 0;
  virtual void colorsChanged() noexcept = 0;
  virtual PixelMemory pixelMemory() const noexcept { return {}; }
  // Before single pixels are read or written: none if that is to go through the device context.
  virtual PixelMemory beginPixels() noexcept {
    beginGdi();
    const PixelMemory memory = pixelMemory();
    if (memory.pixels) GdiFlush();
    return memory;
  }
  virtual HRGN deviceClip() noexcept = 0;  // in device pixels; null: not clipped; stays the context's
  virtual double greatestCoordinate() const noexcept = 0;
  virtual bool cutsDashes() const noexcept = 0;  // the implementation cannot draw this line state's dashes by itself
  virtual bool drawsThinLinesOnly() const noexcept = 0;  // a hairline pen is selected

  // Dashes that can be seen, and that are not too many to be told from a solid line.
  bool drawsDashes() const noexcept;
  bool drawsDashes(const Path& path) const noexcept;

  // What the next stroke or fill needs is there, so that neither is drawn without the other.
  virtual bool readyToStroke(bool isCut) = 0;
  virtual bool readyToFill() = 0;

  // The paths here fit the device. `isCut`: the dashes are lines by now. One without pieces clips all away.
  virtual bool strokeOut(const Path& path, bool isCut) = 0;
  virtual bool fillOut(const Path& path) = 0;
  virtual bool clipOut(const Path& path) = 0;
  virtual bool clipStrokeOut(const Path& path, bool isCut) = 0;
  virtual bool lineOut(Point from, Point to) = 0;

  // Draws onto the unit square as `unitToDevice` places it; without the origin. `smooth`: not by the nearest pixel.
  virtual bool imageOut(const ImageBits& bits, const Matrix& unitToDevice, bool smooth) = 0;
  // The same, turned first: the turned image is placed.
  virtual bool turnedOut(const ImageBits& bits, ImageTurn turn, const Matrix& unitToDevice, bool smooth) = 0;

  // The clip as far as the device context does not know it.
  // Whether something is done with an image's pixels yet before they may be averaged.
  virtual bool drawsEachPixel() const noexcept { return false; }
  virtual HRGN clipBesideDevice() noexcept { return nullptr; }
  // From (0, 0) of another device context to a place without the origin.
  bool blitOut(HDC source, i32 x, i32 y, i32 width, i32 height);

  // User to device pixels, the origin included.
  Matrix fullTransform() const noexcept { return transform_.then(Matrix::translation(origin_.x, origin_.y)); }
  double penScale() const noexcept { return std::sqrt(std::abs(transform_.determinant())); }
  // Device pixels around the output that are drawn too, so that what begins there ends right.
  Box roomAround(double penPixels) const noexcept;

  // A path whose numbers the device takes: the one it was made from, or what clipping in software left of that.
  struct Fit {
    const Path* whole = nullptr;
    Path part;
    bool isCut = false;  // its pen is a solid one: there are no dashes, or they are lines by now

    const Path& path() const noexcept { return whole ? *whole : part; }
  };
  // False when the numbers do not fit. These throw std::bad_alloc.
  bool fitStroke(const Path& path, Fit& fit) const;
  bool fitFill(const Path& path, Fit& fit) const;
  bool fitsNumbers(const Path& path, const Box& onDevice) const noexcept;
  // For GDI: the device context's coordinates of a device pixel.
  POINT local(int x, int y) const noexcept { return {x - viewport_.x, y - viewport_.y}; }
  bool toLocal(const PixelBox& box, RECT& rect) const noexcept;  // false when it does not fit
  // These throw std::bad_alloc.
  bool strokeFitted(const Path& path);
  bool fillFitted(const Path& path);
  bool clipTo(const Path& path);
  // `imageOut`, or `turnedOut`, of what is seen of an image, as the user's settings say. Large images are cut first.
  bool placeImage(const ImageView& view, const Matrix& unitToDevice, ImageTurn turn = ImageTurn::None,
                  const Recolor& recolor = {});
  // Large opaque images whose pixels, or those of what they are made smaller to, each lie on one of the device go
  // straight into a bitmap that the context owns; false when that is not so, or the clip is no rectangle. Throw
  // std::bad_alloc.
  bool copyOut(const ImageView& view, const Matrix& placed, const PixelBox& seen);
  bool reduceOut(const ImageView& view, const Matrix& placed, const PixelBox& seen, i32 width, i32 height, i32 step);
  struct OwnPlace {
    PixelBox part;         // of what is placed there: all that is seen
    u8* pixels = nullptr;  // of its first corner
    i32 strideBytes = 0;

    u8* row(i32 y) const noexcept { return pixels + static_cast<std::ptrdiff_t>(strideBytes) * (y - part.top); }
  };
  bool ownPlace(const Matrix& placed, i32 width, i32 height, OwnPlace& place);
  bool seenPart(const ImageView& view, const Matrix& unitToDevice, PixelBox& seen);  // false: nothing of it
  PixelBox outputArea() const noexcept;                                              // without the origin
  PixelBox seenArea();                                                               // of that, what the clip leaves

  DeviceHandle device_ = nullptr;
  double width_ = 0;
  double height_ = 0;
  Point origin_ = {0, 0};
  POINT baseOrigin_ = {0, 0};  // the viewport origin that the device context brought: device pixels begin there
  POINT viewport_ = {0, 0};    // as much of the origin as the context set on the device context
  bool isAttached_ = false;
  bool isNonDisplay_ = false;
  bool isPathOpen_ = false;
  bool isSingular_ = false;  // the user transform cannot be turned back: nothing is drawn
  FillRule fillRule_ = FillRule::EvenOdd;
  Color backgroundColor_ = kWhite;
  Color strokeColor_ = kBlack;
  Color fillColor_ = kWhite;
  Matrix transform_;
  LineState line_;
  Point current_ = {0, 0};
  Path path_;

 private:
  // Figures of glyphs, apart from the path under construction. What memory did not suffice for is remembered.
  class ShapeSink final : public IGlyphSink {
   public:
    void moveTo(Point to) override;
    void lineTo(Point to) override;
    void curveTo(Point control1, Point control2, Point to) override;
    // False if some of it is missing.
    bool take(Path& path) noexcept;

   private:
    template <class Add>
    void add(Point to, Add add) noexcept;

    Path path_;
    Point current_ = {0, 0};
    bool isWhole_ = true;
  };

  // By the winding rule.
  bool useShape(bool (DrawingContext::*use)(const Path&));

  struct Borrowed {
    gdi::MemoryDevice device;
    gdi::Selected selected;  // goes first
  };

  bool addLines(const Point* points, i32 count) noexcept;
  bool dashedLines(const Point* points, i32 count);
  bool dottedRun(i64 first, i64 end, i64 across, bool isRow, Color color1, Color color2);

  std::vector<Borrowed> borrowed_;
  ShapeSink shape_;
};

// Runs what may run out of memory: false then.
template <class Call>
bool withinMemory(Call call) noexcept {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace corvix
