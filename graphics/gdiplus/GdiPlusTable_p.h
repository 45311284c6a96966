// The one way to GDI+: its flat functions in a table, found in the system's library when the first context needs them.
// A test puts another table in its place.
#pragma once

#include "core/baselib/Api.h"

#include <algorithm>

#include <windows.h>
#include <objidl.h>
namespace Gdiplus {  // whose headers use these without a name space
using std::max;
using std::min;
}  // namespace Gdiplus
#include <gdiplus.h>

namespace corvix::gdiplus {

using Gdiplus::GpStatus;

// clang-format off
#define CORVIX_GDIPLUS_FUNCTIONS(X) \
  X(GdipCreateMatrix2) X(GdipDeleteMatrix) X(GdipSetMatrixElements) \
  X(GdipCreatePen1) X(GdipDeletePen) X(GdipResetPenTransform) X(GdipScalePenTransform) X(GdipSetPenColor) \
  X(GdipSetPenWidth) X(GdipSetPenLineCap197819) X(GdipSetPenLineJoin) X(GdipSetPenMiterLimit) X(GdipSetPenDashArray) \
  X(GdipSetPenDashOffset) X(GdipSetPenDashStyle) \
  X(GdipCreateSolidFill) X(GdipSetSolidFillColor) X(GdipDeleteBrush) \
  X(GdipCreateFromHDC) X(GdipDeleteGraphics) X(GdipSetPageUnit) X(GdipSetSmoothingMode) X(GdipSetInterpolationMode) \
  X(GdipSetPixelOffsetMode) X(GdipTranslateWorldTransform) X(GdipResetWorldTransform) X(GdipSetWorldTransform) \
  X(GdipSetClipRegion) X(GdipSetClipRect) X(GdipResetClip) X(GdipGetClipBounds) X(GdipIsClipEmpty) \
  X(GdipFillRectangle) X(GdipDrawRectangle) X(GdipFillPath) X(GdipDrawPath) \
  X(GdipCreatePath) X(GdipDeletePath) X(GdipResetPath) X(GdipSetPathFillMode) X(GdipStartPathFigure) \
  X(GdipClosePathFigure) X(GdipAddPathLine) X(GdipAddPathLine2) X(GdipAddPathBezier) X(GdipAddPathRectangle) \
  X(GdipWidenPath) X(GdipTransformPath) X(GdipGetPathWorldBounds) \
  X(GdipCreateRegionRect) X(GdipCreateRegionPath) X(GdipCreateRegionHrgn) X(GdipCloneRegion) X(GdipDeleteRegion) \
  X(GdipCombineRegionRect) X(GdipCombineRegionPath) X(GdipCombineRegionRegion) \
  X(GdipGetRegionHRgn) X(GdipIsVisibleRegionPoint) X(GdipIsVisibleRegionRect) \
  X(GdipCreateBitmapFromScan0) X(GdipSetImagePalette) X(GdipImageRotateFlip) X(GdipDisposeImage) \
  X(GdipDrawImageRectI) X(GdipDrawImageRectRectI) X(GdipDrawImagePointsRect) \
  X(GdipCreateImageAttributes) X(GdipDisposeImageAttributes) X(GdipSetImageAttributesColorMatrix) \
  X(GdipSetImageAttributesRemapTable) X(GdipSetImageAttributesWrapMode) \
  X(GdipCreateBitmapFromFile) X(GdipSaveImageToFile) X(GdipGetImageWidth) X(GdipGetImageHeight) \
  X(GdipGetImagePixelFormat) X(GdipGetImagePaletteSize) X(GdipGetImagePalette) X(GdipBitmapLockBits) \
  X(GdipBitmapUnlockBits) X(GdipAlloc) X(GdipFree)
// clang-format on

struct Table {
#define CORVIX_GDIPLUS_MEMBER(name) decltype(&Gdiplus::DllExports::name) name;
  CORVIX_GDIPLUS_FUNCTIONS(CORVIX_GDIPLUS_MEMBER)
#undef CORVIX_GDIPLUS_MEMBER
  decltype(&Gdiplus::GdiplusStartup) GdiplusStartup;
  decltype(&Gdiplus::GdiplusShutdown) GdiplusShutdown;
};

// The table in force; null when the system's library or one of its functions cannot be found. [any thread]
const Table* table() noexcept;

// Puts another table in force; null brings the system's back. It must outlive every context made meanwhile. [tests]
void replaceTable(const Table* other) noexcept;

// The table when it is known to be there: a Session is running.
const Table& flat() noexcept;

// One start-up of GDI+, ended with it.
class Session {
 public:
  Session() noexcept;
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  explicit operator bool() const noexcept { return token_ != 0; }

 private:
  ULONG_PTR token_ = 0;
};

// Whether a pen's transform changes what the pen draws; an emulation may ignore it. Found out once per process, by
// widening a line; asked only while a Session is running.
bool penTransformsWork() noexcept;
void assumePenTransformsWork(bool work) noexcept;  // [tests]
void forgetPenTransforms() noexcept;               // asked again, then [tests]

}  // namespace corvix::gdiplus
