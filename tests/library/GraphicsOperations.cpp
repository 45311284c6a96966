// Drawing, images, fonts and text.
#include "tests/library/PublicOperations.h"

#include "graphics/ImageFreezer.h"
#include "graphics/Stencils.h"
#include "graphics/creators/QuillCreators_p.h"
#include "graphics/fonts/FMFontMachine_p.h"
#include "graphics/fonts/FontSource.h"
#include "graphics/fonts/GlyphCache_p.h"
#include "graphics/images/AGImage_p.h"
#include "graphics/text/Text.h"

#include <windows.h>

namespace corvix::testing_support {
namespace {

const Point kPoints[] = {{1, 2}, {20, 3}, {10, 15}, {4, 18}, {9, 9}, {12, 13}};

// Does `work` on a page of a kind; the creator forgets the page.
template <u32 kWanted, void (*work)(IAGDC&)>
void on() {
  const auto creator = make<QuillMemoryDCCreator>();
  const auto page = Ref<IAGDC>::adopt(creator->create(kWanted, 0, nullptr, 24, 20));
  EXPECT_EQ(creator->livingCount(), page ? 1u : 0u);
  if (page) work(*page);
}

void useState(IAGDC& page) {
  const double lengths[] = {3, 1};
  double back[2], phase = 0;
  if (page.setDash(lengths, 2, 0.5)) {
    EXPECT_TRUE(page.dash(back, 2, &phase) == 2 && phase == 0.5);
  }
  if (page.setLineWidth(2)) {
    EXPECT_EQ(page.lineWidth(), 2);
  }
  if (page.setStrokeColor(kBlack)) {
    EXPECT_EQ(page.strokeColor(), kBlack);
  }
  if (page.setFillColor(kWhite)) {
    EXPECT_EQ(page.fillColor(), kWhite);
  }
  if (page.setBackgroundColor(kBlack)) {
    EXPECT_EQ(page.backgroundColor(), kBlack);
  }
  page.setLineCap(kCapRound);
  page.setLineJoin(kJoinBevel);
  page.setFillRule(FillRule::Winding);
  page.setMiterLimit(4);
  page.setDeviceMiterLimit(4);
  page.selectPen();
  page.selectHairlinePen();
  page.selectGeometricPen();
  page.nearestColor(rgb(10, 20, 30));
  page.deviceCapability(HORZRES);
  EXPECT_TRUE(page.canDraw() && page.isAttached() && !page.isNonDisplay() && !page.unsupported());
  EXPECT_TRUE(page.width() == 24 && page.height() == 20 && page.capabilities() != 0);
  if (page.setOrigin(1, 2)) {
    EXPECT_EQ(page.origin().y, 2);
  }
  const bool isScaled = page.setTransform(Matrix::scaling(2, 1)) && page.multiplyTransform(Matrix::scaling(2, 1));
  Point point = {1, 1};
  if (isScaled && page.userToDevice(&point, 1) && page.deviceToUser(&point, 1)) {
    EXPECT_NEAR(point.x, 1, 1e-9);
  }
  page.resetTransform();
  page.setSmoothing(page.smoothing());
  page.setInterpolation(page.interpolation());
  for (const bool has : {page.supportsText(), page.supportsBlending(), page.supportsShading()}) static_cast<void>(has);
  page.clear();
}

void drawLines(IAGDC& page) {
  const double dash[] = {3, 1};
  page.setDash(dash, 2, 0);
  page.setLineWidth(2);
  page.moveTo(1, 1);
  page.lineTo(20, 15);
  page.moveToPixel(2, 2);
  page.lineToPixel(4, 9);
  page.curveToPixel(1, 2, 3, 4, 5, 6);
  page.curveTo(1, 2, 3, 4, 5, 6);
  page.curvesTo(kPoints, 6);
  page.linePixel(1, 1, 9, 9);
  page.line(1, 1, 9, 9);
  page.lines(kPoints, 6);
  page.strokePolyline(kPoints, 6);
  page.drawRectangle(1, 1, 5, 5);
  page.rectangle(1, 1, 5, 5);
  page.arcPixel({1, 1, 9, 9}, 1, 5, 9, 5);
  page.arc(9, 9, 5, 4, 0, 2);
  page.ellipsePixel({1, 1, 9, 9});
  page.ellipse(9, 9, 5, 4);
  static_cast<void>(page.currentPoint());
}

void drawAreas(IAGDC& page) {
  const u8 pattern[] = {1, 2, 4, 8, 16, 32, 64, 128};
  page.fillRect(2, 2, 5, 5);
  page.fillEllipse(9, 9, 5, 4);
  page.patternRectPixel(1, 1, 9, 9, pattern);
  page.patternRect(1, 1, 9, 9, pattern);
  page.xorRect({1, 1, 9, 9});
  page.focusRect({1, 1, 9, 9});
  page.dottedRow(1, 9, 3, kBlack, kWhite);
  page.dottedColumn(3, 1, 9, kBlack, kWhite);
  page.setPixel(1, 1, kBlack);
  page.setPixelAt(1, 1, kBlack);
  Color color = 0;
  page.getPixel(1, 1, &color);
  page.readPixel(1, 1, &color);
}

void usePaths(IAGDC& page) {
  for (int round = 0; round < 3; ++round) {
    page.beginPath();
    page.moveTo(1, 1);
    page.lineTo(20, 2);
    page.curveTo(20, 9, 12, 18, 4, 15);
    page.closePath();
    if (round == 0) page.flattenPath();
    page.endPath();
    if (round == 0) page.drawPath(PathPaint::FillAndStroke);
    if (round == 1) page.clipPath();
    if (round == 2) page.clipStroke();
  }
}

void useClips(IAGDC& page) {
  page.saveClip();
  page.clipPolygon(kPoints, 4);
  page.clipRect(1, 1, 20, 15);
  page.clipRectPixel({2, 2, 18, 14});
  page.excludeRect(5, 5, 2, 2);
  if (const HRGN region = page.copyClipRegion()) {
    page.saveClip();
    page.clipRegion(region);
    page.setClipRegion(region);
    page.restoreClip();
    DeleteObject(region);
  }
  Box bounds;
  page.clipBounds(&bounds);
  page.isClipEmpty();
  page.isPointVisible(3, 3);
  page.isRectVisible(3, 3, 2, 2);
  page.fillRect(0, 0, 24, 20);
  EXPECT_LE(page.savedClipCount(), 1);
  page.restoreClip();
  page.resetClip();
}

void useImages(IAGDC& page) {
  const Color palette[] = {kBlack, kWhite};
  const auto image = Ref<IAGImage>::adopt(page.createImage(6, 6, ColorModel::Rgb, 24));
  const auto mask = Ref<IAGImage>::adopt(page.createImage(6, 6, ColorModel::Indexed, 1));
  if (!image || !mask) return;
  if (mask->setPalette(palette, 2)) {
    EXPECT_TRUE(mask->paletteSize() == 2 && mask->palette()[1] == kWhite);
  }
  const float matrix[] = {1, 0, 0, 1, 0, 0};
  const ColorChange change = {kBlack, kWhite};
  page.drawImagePixel(image.get(), 1, 1);
  page.drawImage(image.get(), 2, 2, 12, 12);
  page.drawImagePart(image.get(), {1, 1, 4, 4}, 2, 2, 12, 12);
  page.drawImageOffscreen(image.get(), 2, 2, 12, 12);
  page.drawImageTransformed(image.get(), Matrix::scaling(9, 9));
  page.drawImageTurned(image.get(), 3, 3, 6, 6, ImageTurn::Turn90);
  page.drawImageMatrix(image.get(), 2, 2, 12, 12, matrix);
  page.drawImageRemapped(image.get(), 2, 2, 12, 12, &change, 1);
  page.drawImageMask(mask.get(), 2, 2, 12, 12);
  query<IAGStencils>(&page)->drawMaskTransformed(mask.get(), Matrix::scaling(9, 9));
  auto* const freezer = query<IAGImageFreezer>(mask.get());
  EXPECT_TRUE(freezer->freeze() && freezer->isFrozen() && freezer->readRow(5));
  page.drawImage(mask.get(), 2, 2, 3, 3);
  page.drawImageThroughMemory(image.get(), 2, 2);
  image->captureFrom(page, 0, 0);
  Color color = 0;
  EXPECT_TRUE(image->pixelColor(1, 1, &color) && image->row(5) && image->strideBytes() == 20);
  const auto gray = Ref<IAGImage>::adopt(image->convertTo(ColorModel::Gray));
  if (gray) {
    EXPECT_TRUE(gray->width() == 6 && gray->height() == 6 && gray->bitsPerPixel() == 8 &&
                gray->colorModel() == ColorModel::Gray);
  }
}

void useDevices(IAGDC& page) {
  const HDC device = page.deviceContext();
  page.copyTo(device, 0, 0);
  const auto second = Ref<IAGDC>::adopt(page.createDetached());
  if (second && second->attach(device, 24, 20)) {
    second->fillRect(1, 1, 3, 3);
    second->detach();
  }
  const auto screen = make<QuillScreenDCCreator>();
  const auto third = Ref<IAGDC>::adopt(screen->create(0, 0, device, 24, 20));
  if (third && page.bitmap()) third->returnDevice(third->acquireDevice(page.bitmap()));
}

void useImageFiles() {
  const auto image = AGImage::create(4, 3, ColorModel::Argb, 0);
  if (!image) return;
  for (const ImageFile kind : {ImageFile::Bmp, ImageFile::Png}) {
    const OwnFile file(L"corvix-swept.image");
    if (!image->saveFile(file.path(), kind)) {
      EXPECT_EQ(GetFileAttributesW(file.path()), INVALID_FILE_ATTRIBUTES);
      continue;
    }
    const auto back = AGImage::create(1, 1, ColorModel::Gray, 0);
    if (!back) return;
    if (!back->loadFile(file.path())) {
      EXPECT_EQ(back->width(), 1);
    }
    if (image->saveFile(file.path(), kind)) continue;
    const HeapFaults::Pause pause;
    EXPECT_TRUE(back->loadFile(file.path()));  // as it was
  }
}

class NoFonts : public BSmartObject, public IFMFontCreator {
  CORVIX_IDENTITY(NoFonts, 0x2F90B4D6, 0x4C5713EA, 0x89D026FB, 0x5E1A7C34, BSmartObject, IFMFontCreator)

 public:
  IFMFont* createFont(const wchar_t*) override { return nullptr; }
};

struct Points : IGlyphSink {
  void moveTo(Point) override { ++count; }
  void lineTo(Point) override { ++count; }
  void curveTo(Point, Point, Point) override { ++count; }
  int count = 0;
};

Ref<IFMFont> anyFont(IFMFontChooser& machine) {
  FontRequest request;
  request.family = L"Helvetica-Bold";
  return Ref<IFMFont>::adopt(machine.createFontFor(request));
}

void useFonts() {
  const auto machine = FMFontMachine::shared();
  const auto none = make<NoFonts>();
  machine->addCreator(none.get());
  EXPECT_TRUE(machine->removeCreator(none.get()));
  const auto named = Ref<IFMFont>::adopt(machine->createFont(L"No such family"));
  EXPECT_TRUE(!named || (named->isSubstitute() && named->family()));
  const auto font = anyFont(*machine);
  auto* const source = query<IFMFontSource>(font.get());
  if (!source) return;
  EXPECT_GE(source->metrics().ascent, 0);
  const u32 glyph = source->glyphOf('g');
  EXPECT_GE(source->advance(glyph), 0);
  Points points;
  source->outline(glyph, points);
  GlyphCoverage coverage;
  if (!source->coverage(glyph, 12, 17, coverage)) {
    EXPECT_EQ(coverage.width, 0);
  }
}

void findFonts() {
  const auto machine = FMFontMachine::shared();
  const auto font = Ref<IFMFont>::adopt(machine->fontWithGlyph('A', nullptr));
  const auto none = Ref<IFMFont>::adopt(machine->fontWithGlyph(0x10FFFE, font.get()));
}

void useText(IAGDC& page) {
  const struct Cached {
    ~Cached() { glyphCache().hibernate(true); }
  } cleared;
  const auto machine = FMFontMachine::shared();
  const auto font = anyFont(*machine);
  auto* const source = query<IFMFontSource>(font.get());
  if (!source) return;
  Point end = {0, 0};
  const Matrix at = Matrix::translation(1, 15);
  drawText(page, *font, 12, at, L"ag", 2, &end);
  drawText(page, *font, 12, Matrix::rotation(1).then(at), L"g", 1);
  textWidth(*font, 12, L"ag", 2);
  const GlyphPlace place = {source->glyphOf('x'), 1, 0};
  drawGlyphs(page, *font, 12, at, &place, 1);
  clipText(page, *font, 30, at, L"g", 1);
}

#define CORVIX_ON_BOTH(name, work) \
  {name " by GDI", on<0, work>, true}, { name " by GDI+", on<capability::kGdiPlus, work>, true }

const PublicOperation kOperations[] = {
    CORVIX_ON_BOTH("state", useState),         CORVIX_ON_BOTH("lines", drawLines),
    CORVIX_ON_BOTH("areas", drawAreas),        CORVIX_ON_BOTH("paths", usePaths),
    CORVIX_ON_BOTH("clips", useClips),         CORVIX_ON_BOTH("images", useImages),
    CORVIX_ON_BOTH("devices", useDevices),     CORVIX_ON_BOTH("text", useText),
    {"image files", useImageFiles, true},      {"fonts", useFonts, true},
    {"fonts by a character", findFonts, true},
};

}  // namespace

std::span<const PublicOperation> graphicsOperations() { return kOperations; }

}  // namespace corvix::testing_support
