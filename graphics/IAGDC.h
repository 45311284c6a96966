// IAGDC: the one surface to draw on, through plain GDI, through GDI+ or through what a plug-in offers ("smooth" draws
// with coverage of its own, docs/smooth.md). Made by an IAGDCCreator (IAGDCCreator.h).
//
// Coordinates: operations that take doubles take user coordinates, which the user transform (not in plain GDI)
// and the drawing origin turn into device pixels; those with "Pixel" in their names, and all that take i32, take device
// pixels, which only the origin moves. The order of the operations is fixed. Every operation answers true when it was
// carried out, and false, with nothing drawn, when it was not: nothing is attached, the implementation does not offer
// it, or a coordinate is no number or does not fit. One thread at a time; nothing is locked.
//
// While a path is open (`beginPath`), `moveTo`, `lineTo`, `curveTo`, `line`, `rectangle` and their other forms add to
// it instead of drawing, attached or not. `drawPath` and the clip operations use the path and leave it; `endPath` or
// the next `beginPath` forgets it. A rectangle with a negative size lies on the other side of its corner.
#pragma once

#include "graphics/Geometry.h"
#include "graphics/Image.h"
#include "graphics/SystemHandles.h"

namespace corvix {

// Any other number counts as Flat or Miter.
constexpr i32 kCapFlat = 0, kCapRound = 1, kCapSquare = 2;
constexpr i32 kJoinMiter = 0, kJoinRound = 1, kJoinBevel = 2;

enum class FillRule : i32 { EvenOdd, Winding };
enum class PathPaint : i32 { Stroke, Fill, FillAndStroke };
enum class ImageTurn : i32 { None, Turn90, Turn180, Turn270, FlipX, Turn90FlipX, Turn180FlipX, Turn270FlipX };

struct ColorChange {
  Color from;
  Color to;
};

class IAGDC : public BSmartObject {
  CORVIX_IDENTITY(IAGDC, 0x1A6D94C5, 0x4E38B207, 0x8C51FA69, 0xD704E3B8, BSmartObject)

 public:
  // The bitmap that a memory context owns; else null.
  virtual BitmapHandle bitmap() const noexcept = 0;

  // The caller keeps the device context, and keeps it alive until `detach`. `detach` gives it back as it was, and drops
  // the clip and the saved ones. False, with the former one still attached, when `device` is no device context or a
  // size is negative or no number.
  virtual bool attach(DeviceHandle device, double width, double height) = 0;
  virtual bool detach() = 0;

  // A memory device context compatible with this one, with `bitmap` (may be null) selected; null if it cannot be had.
  // What was not given back is when the context goes.
  virtual DeviceHandle acquireDevice(BitmapHandle bitmap) = 0;
  virtual bool returnDevice(DeviceHandle device) = 0;

  // A new context of the same implementation, owned by the caller, with nothing attached and of size 0 by 0.
  virtual IAGDC* createDetached() = 0;

  // True when a device context is attached and, in a memory context, its bitmap exists.
  virtual bool canDraw() const noexcept = 0;

  virtual double width() const noexcept = 0;
  virtual double height() const noexcept = 0;

  // For GDI calls of your own, right after this one: everything drawn so far is on it, and the context's clip and
  // origin (rounded to whole pixels) apply to it, the user transform does not. Null when nothing is attached.
  virtual DeviceHandle deviceContext() = 0;
  virtual bool isAttached() const noexcept = 0;
  virtual bool isNonDisplay() const noexcept = 0;  // a printer, plotter or metafile
  virtual u32 capabilities() const noexcept = 0;   // all bits that this kind of context accepts
  virtual Point origin() const noexcept = 0;
  virtual bool setOrigin(double x, double y) = 0;

  // Owned by the caller. Bits per pixel 0: 8 for each component. Null for sizes or depths that there are not.
  virtual IAGImage* createImage(i32 width, i32 height, ColorModel model, i32 bitsPerPixel) = 0;
  virtual bool setLineCap(i32 cap) = 0;
  virtual bool setFillRule(FillRule rule) = 0;         // for what is filled or clipped by; EvenOdd at first
  virtual bool setBackgroundColor(Color color) = 0;    // of patterns; `clear` sets it to white
  virtual bool setDeviceMiterLimit(double limit) = 0;  // GDI's own, for what the caller draws; GDI+: false

  // Black and white at first. A plain GDI context draws every colour opaque but for masks that are images.
  virtual bool setStrokeColor(Color color) = 0;
  virtual bool setFillColor(Color color) = 0;
  virtual Color strokeColor() const noexcept = 0;
  virtual Color fillColor() const noexcept = 0;
  virtual Color backgroundColor() const noexcept = 0;
  virtual Color nearestColor(Color color) = 0;  // what the device shows for it
  virtual bool readPixel(double x, double y, Color* color) = 0;

  // Dashes and gaps in turn, and where in them a line begins, in user lengths. No lengths: a solid line. False for
  // negative lengths and for more than 1024.
  virtual bool setDash(const double* lengths, i32 count, double phase) = 0;
  virtual i32 dash(double* lengths, i32 capacity, double* phase) const noexcept = 0;  // returns the count
  virtual bool setLineWidth(double width) = 0;  // 0: the thinnest line that the device can show
  virtual double lineWidth() const noexcept = 0;
  virtual bool setLineJoin(i32 join) = 0;
  virtual bool setMiterLimit(double limit) = 0;

  virtual bool moveToPixel(i32 x, i32 y) = 0;
  virtual bool moveTo(double x, double y) = 0;

  // Which pen strokes from now on: that of the line state (at first), or a solid one of the thinnest width.
  virtual bool selectPen() = 0;
  virtual bool selectHairlinePen() = 0;

  virtual bool clear() = 0;  // the output size in opaque white, whatever the clip

  // From `first` up to but not including `end`, the two colours in turn.
  virtual bool dottedRow(i32 first, i32 end, i32 y, Color color1, Color color2) = 0;
  virtual bool dottedColumn(i32 x, i32 first, i32 end, Color color1, Color color2) = 0;
  virtual bool drawRectangle(double x, double y, double width, double height) = 0;  // its outline; GDI: false
  virtual bool setPixel(i32 x, i32 y, Color color) = 0;  // false outside the output size and the clip
  virtual bool setPixelAt(double x, double y, Color color) = 0;
  virtual bool getPixel(i32 x, i32 y, Color* color) = 0;  // always opaque

  // These begin at the current point and move it to their end.
  virtual bool lineToPixel(i32 x, i32 y) = 0;
  virtual bool lineTo(double x, double y) = 0;
  virtual bool curveToPixel(i32 x1, i32 y1, i32 x2, i32 y2, i32 x, i32 y) = 0;
  virtual bool curveTo(double x1, double y1, double x2, double y2, double x, double y) = 0;
  virtual bool curvesTo(const Point* points, i32 count) = 0;  // three for each curve

  // These leave the current point, except in a path: there it moves to their end, that of a rectangle to its corner.
  virtual bool linePixel(i32 x1, i32 y1, i32 x2, i32 y2) = 0;
  virtual bool line(double x1, double y1, double x2, double y2) = 0;
  virtual bool lines(const Point* points, i32 count) = 0;  // two for each line

  virtual bool drawPath(PathPaint paint) = 0;
  virtual bool rectangle(double x, double y, double width, double height) = 0;  // stroked, or added to the path
  virtual bool fillRect(double x, double y, double width, double height) = 0;

  // Eight rows of eight bits, repeated from the device's corner: 1 the fill colour, 0 the background. GDI+: false.
  virtual bool patternRectPixel(i32 x, i32 y, i32 width, i32 height, const u8* pattern) = 0;
  virtual bool patternRect(double x, double y, double width, double height, const u8* pattern) = 0;
  virtual bool xorRect(const PixelBox& box) = 0;    // inverts the frame of the box; once more and it is gone
  virtual bool focusRect(const PixelBox& box) = 0;  // a dotted frame; likewise

  // The clip belongs to the context, on top of what the device context brought. It moves with the origin.
  virtual bool clipRect(double x, double y, double width, double height) = 0;
  virtual bool clipRectPixel(const PixelBox& box) = 0;
  virtual bool excludeRect(double x, double y, double width, double height) = 0;
  virtual bool clipPolygon(const Point* points, i32 count) = 0;
  virtual bool clipRegion(RegionHandle region) = 0;  // in device pixels from the origin; it stays the caller's
  // Of an open path to which nothing was added yet, or of none, both are false and leave the clip.
  virtual bool clipPath() = 0;    // by the path's inside, as the fill rule says
  virtual bool clipStroke() = 0;  // by what stroking the path would cover; the thinnest line: a pixel
  virtual bool resetClip() = 0;
  virtual bool saveClip() = 0;
  virtual bool restoreClip() = 0;                       // false, with the clip as it was, when nothing is saved
  virtual bool setClipRegion(RegionHandle region) = 0;  // instead of the clip so far; null: no clip
  virtual RegionHandle copyClipRegion() = 0;            // the caller's to delete; null when nothing is clipped
  virtual i32 savedClipCount() const noexcept = 0;
  virtual bool clipBounds(Box* bounds) = 0;
  virtual bool isClipEmpty() = 0;
  virtual bool isPointVisible(double x, double y) = 0;
  virtual bool isRectVisible(double x, double y, double width, double height) = 0;

  // Copies the drawn area, inside the clip, to (x, y) of another device context.
  virtual bool copyTo(DeviceHandle device, i32 x, i32 y) = 0;

  virtual bool drawImagePixel(IAGImage* image, i32 x, i32 y) = 0;  // 1:1
  virtual bool drawImage(IAGImage* image, double x, double y, double width, double height) = 0;
  virtual bool drawImagePart(IAGImage* image, const PixelBox& part, double x, double y, double width,
                             double height) = 0;
  virtual bool drawImageOffscreen(IAGImage* image, i32 x, i32 y, i32 width, i32 height) = 0;  // without flicker
  virtual bool drawImageTransformed(IAGImage* image,
                                    const Matrix& unitToUser) = 0;  // the unit square becomes the image
  virtual bool drawImageTurned(IAGImage* image, i32 x, i32 y, i32 width, i32 height, ImageTurn turn) = 0;
  // 5 by 5, row by row: (red, green, blue, alpha, 1) from 0 to 1 times the matrix.
  virtual bool drawImageMatrix(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const float* matrix) = 0;
  virtual bool drawImageRemapped(IAGImage* image, i32 x, i32 y, i32 width, i32 height, const ColorChange* changes,
                                 i32 count) = 0;
  virtual bool drawImageMask(IAGImage* image, i32 x, i32 y, i32 width, i32 height) = 0;  // 1 bit: 1 in the fill colour

  virtual i32 deviceCapability(i32 index) = 0;  // the system's GetDeviceCaps; 0 without a device context

  // A pen with caps and joins even for thin lines. GDI+ pens always are.
  virtual bool selectGeometricPen() = 0;
  virtual bool unsupported() = 0;  // false

  // GDI+: false. Angles in degrees, counter-clockwise from the right. At most 1,048,576 pixels wide or high in plain
  // GDI.
  virtual bool arcPixel(const PixelBox& box, i32 startX, i32 startY, i32 endX, i32 endY) = 0;
  virtual bool arc(double centerX, double centerY, double radiusX, double radiusY, double start, double sweep) = 0;
  virtual bool ellipsePixel(const PixelBox& box) = 0;
  virtual bool ellipse(double centerX, double centerY, double radiusX, double radiusY) = 0;
  virtual bool fillEllipse(double centerX, double centerY, double radiusX, double radiusY) = 0;

  virtual bool drawImageThroughMemory(IAGImage* image, i32 x, i32 y) = 0;
  virtual bool strokePolyline(const Point* points, i32 count) = 0;

  // Those of "smooth" answer true, plain GDI and GDI+ false; `drawText` (graphics/text/Text.h) draws on all of them.
  virtual bool supportsText() const noexcept = 0;
  virtual bool supportsBlending() const noexcept = 0;
  virtual bool supportsShading() const noexcept = 0;

  // False in plain GDI. A matrix that cannot be turned back is taken: it draws nothing.
  virtual bool setTransform(const Matrix& userToDevice) = 0;
  virtual bool multiplyTransform(const Matrix& first) = 0;  // `first`, then the transform so far
  virtual bool resetTransform() = 0;

  // By the user transform, without the origin; plain GDI leaves the points, which is right as it has none.
  virtual bool userToDevice(Point* points, i32 count) const noexcept = 0;
  virtual bool deviceToUser(Point* points, i32 count) const noexcept = 0;

  // Levels from 0 to 255 in five steps; the setters return the level of the step that was chosen. Plain GDI: 0.
  virtual i32 setSmoothing(i32 level) = 0;
  virtual i32 setInterpolation(i32 level) = 0;
  virtual i32 smoothing() const noexcept = 0;
  virtual i32 interpolation() const noexcept = 0;

  virtual Point currentPoint() const noexcept = 0;
  virtual bool beginPath() = 0;
  virtual bool closePath() = 0;    // the figure; false when there is none
  virtual bool flattenPath() = 0;  // curves become lines that are within a quarter of a pixel
  virtual bool endPath() = 0;
};

}  // namespace corvix
