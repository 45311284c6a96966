// The smooth contexts through the plug-in manager: nothing of them is linked but the loops over pixels.
#include "core/baselib/objects/Ref.h"
#include "graphics/Blending.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/Shading.h"
#include "graphics/Tiles.h"
#include "graphics/gdi/Gdi_p.h"
#include "graphics/text/Text.h"
#include "graphics/text/TextTarget.h"
#include "plugins/smooth/Spans_p.h"
#include "shell/Shell.h"
#include "tests/graphics/GdiObjects.h"
#include "tests/support/HeapBlocks.h"
#include "tests/support/ImportSlot.h"
#include "tests/support/ImportTable.h"
#include "tests/support/Soak.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>

namespace corvix {
namespace {

using namespace testing_support;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

IAGDCCreator& creator(bool isMemory = true) {
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  static const Ref<IAGDCCreator> creators[2] = {createObject<IAGDCCreator>(manager, L"AGDC.SmoothScreen"),
                                                createObject<IAGDCCreator>(manager, L"AGDC.SmoothMemory")};
  return *creators[isMemory];
}

Ref<IAGDC> makePage(double width = 64, double height = 48) {
  auto page = Ref<IAGDC>::adopt(creator().create(0, 0, nullptr, width, height));
  if (page) page->setFillColor(kBlack);
  return page;
}

Color pixelOf(IAGDC& page, i32 x, i32 y) {
  Color color = 0;
  EXPECT_TRUE(page.getPixel(x, y, &color));
  return color;
}

u32 grey(IAGDC& page, i32 x, i32 y) { return redOf(pixelOf(page, x, y)); }

TEST(Smooth, CreatorsAnswerByMasksAndSizes) {
  const struct {
    bool isMemory;
    u32 required;
    u32 optional;
    double width;
    double height;
    bool isMade;
  } rows[] = {{true, 0, 0, 8, 8, true},          {true, capability::kGdiPlus | capability::kCommon, 0, 8, 8, true},
              {true, 0x4000, 0, 8, 8, false},    {true, 0, 0x4000, 8, 8, true},
              {true, 0, 0, 0.5, 2.2, true},      {true, 0, 0, 0, 8, false},
              {true, 0, 0, kNan, 8, false},      {true, 0, 0, 8, kInfinity, false},
              {true, 0, 0, 30000, 30000, false}, {false, 0, 0, 8, 8, true}};
  makePage();  // the first start of everything
  const int freeBefore = freeGdiObjects();
  for (const auto& row : rows) {
    const auto page =
        Ref<IAGDC>::adopt(creator(row.isMemory).create(row.required, row.optional, nullptr, row.width, row.height));
    EXPECT_EQ(static_cast<bool>(page), row.isMade) << row.width << ' ' << row.required;
    EXPECT_TRUE(!page || (page->supportsText() && page->supportsBlending() && page->supportsShading()));
  }
  EXPECT_EQ(freeGdiObjects(), freeBefore);
}

TEST(Smooth, CoverageIsTheAreaThatIsCovered) {
  const struct {
    double x, y, width, height;
    i32 atX, atY;
    u32 level;  // of black on white
  } rows[] = {{3, 3, 4, 4, 3, 3, 0},        {3, 3, 4, 4, 2, 3, 255},   {3.5, 3, 4, 4, 3, 4, 128},
              {3.25, 3.5, 4, 4, 3, 3, 159}, {3.5, 3, 4, 4, 7, 4, 128}, {10.125, 5, 0.25, 9, 10, 8, 191}};
  const auto page = makePage();
  for (const auto& row : rows) {
    page->clear();
    EXPECT_TRUE(page->fillRect(row.x, row.y, row.width, row.height));
    EXPECT_NEAR(grey(*page, row.atX, row.atY), row.level, 1) << row.x << ' ' << row.atX;
  }
  for (const i32 level : {0, 128}) {  // without smoothing a half and more counts
    page->clear();
    EXPECT_EQ(page->setSmoothing(level), level);
    EXPECT_TRUE(page->fillRect(3.4, 3, 4, 4));
    EXPECT_EQ(grey(*page, 3, 4), 0u);
    EXPECT_EQ(grey(*page, 7, 4), 255u);
  }
}

TEST(Smooth, ClipsStackWithSoftEdges) {
  const auto page = makePage();
  EXPECT_FALSE(page->restoreClip());
  EXPECT_TRUE(page->saveClip() && page->clipRect(4.5, 4, 20, 20) && page->saveClip());
  EXPECT_TRUE(page->clipRect(10, 0, 40, 40) && page->fillRect(0, 0, 64, 48));
  EXPECT_EQ(grey(*page, 9, 8), 255u);
  EXPECT_EQ(grey(*page, 10, 8), 0u);
  EXPECT_NEAR(grey(*page, 24, 8), 128, 1);
  EXPECT_TRUE(page->restoreClip() && page->fillRect(0, 0, 64, 48));
  EXPECT_NEAR(grey(*page, 4, 8), 128, 1);
  EXPECT_TRUE(page->excludeRect(6, 6, 4, 4) && page->isPointVisible(5, 5) && !page->isPointVisible(7, 7));
  EXPECT_TRUE(page->setOrigin(10, 0) && page->isPointVisible(5, 5) && !page->isPointVisible(7, 7));
  EXPECT_TRUE(page->restoreClip() && page->isPointVisible(40, 40));
  for (int i = 0; i < 1000; ++i) {
    EXPECT_TRUE(page->saveClip() && page->beginPath() && page->rectangle(i * 0.01, 0.3, 40, 30) && page->clipPath());
  }
  EXPECT_EQ(page->savedClipCount(), 1000);
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(page->restoreClip());
  EXPECT_TRUE(page->isPointVisible(45, 45));
}

// Shapes, regions and coloured pictures: what the plain contexts draw, but for the edges. GDI+ has no ellipses.
TEST(Smooth, DrawsWhereThePlainContextsDo) {
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  const auto plain = createObject<IAGDCCreator>(manager, L"AGDC.Memory");
  const gdi::Region corner(CreateRectRgn(4, 4, 30, 20));
  const gdi::Region two(CreateRectRgn(20, 10, 50, 40));
  ASSERT_NE(CombineRgn(two.get(), two.get(), corner.get(), RGN_OR), ERROR);
  const u8 pattern[8] = {0xF0, 0xF0, 0xF0, 0xF0, 0x0F, 0x0F, 0x0F, 0x0F};
  const float swapRedAndBlue[25] = {0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
  const ColorChange change = {rgb(60, 0, 0), kBlack};
  const Point angle[] = {{2, 2}, {44, 2}, {44, 16}, {26, 16}, {26, 44}, {2, 44}};
  const auto imageOf = [](IAGDC& page) {
    auto image = Ref<IAGImage>::adopt(page.createImage(4, 3, ColorModel::Rgb, 0));
    for (i32 i = 0; i < 36; ++i) image->row(i / 12)[i % 12] = i % 3 == 2 ? static_cast<u8>(5 * i) : u8{0};
    return image;
  };
  const auto fill = [](IAGDC& page) { return page.fillRect(0, 0, 64, 48); };
  constexpr u32 kGdi = 0, kGdiPlus = capability::kGdiPlus;
  constexpr int kClose = 12, kEdges = 2;  // parts of the ink that may differ: strokes of three pixels are half edges
  const struct {
    const char* name;
    u32 by;
    int parts;
    std::function<bool(IAGDC&)> draw;
  } rows[] = {{"arc", kGdi, kEdges, [](IAGDC& p) { return p.arc(30, 24, 20, 12, 30, 200); }},
              {"arc in pixels", kGdi, kEdges,
               [](IAGDC& p) {
                 return p.arcPixel({10, 8, 50, 40}, 60, 24, 30, 2);
               }},
              {"ellipse", kGdi, kEdges, [](IAGDC& p) { return p.ellipse(30, 24, 20, 12); }},
              {"ellipse in pixels", kGdi, kEdges,
               [](IAGDC& p) {
                 return p.ellipsePixel({10, 8, 50, 40});
               }},
              {"filled ellipse", kGdi, kClose, [](IAGDC& p) { return p.fillEllipse(30, 24, 20, 12); }},
              {"rectangle", kGdiPlus, kEdges, [](IAGDC& p) { return p.drawRectangle(10, 10, 30, 20); }},
              {"pattern", kGdi, kClose, [&](IAGDC& p) { return p.patternRect(8, 8, 32, 24, pattern); }},
              {"region", kGdiPlus, kClose, [&](IAGDC& p) { return p.clipRegion(two.get()) && fill(p); }},
              {"region of one box", kGdiPlus, kClose, [&](IAGDC& p) { return p.clipRegion(corner.get()) && fill(p); }},
              {"region in a clip", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.clipPolygon(angle, 6) && p.clipRegion(two.get()) && fill(p); }},
              {"clip in a region", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.clipRegion(two.get()) && p.clipPolygon(angle, 6) && fill(p); }},
              {"region instead of a clip", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.clipPolygon(angle, 6) && p.setClipRegion(two.get()) && fill(p); }},
              {"region from an origin", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.setOrigin(5, 3) && p.clipRegion(two.get()) && fill(p) && p.setOrigin(0, 0); }},
              {"no region", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.clipRegion(two.get()) && p.setClipRegion(nullptr) && fill(p); }},
              {"image, offscreen", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.drawImageOffscreen(imageOf(p).get(), 4, 6, 40, 30); }},
              {"recoloured", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.drawImageMatrix(imageOf(p).get(), 4, 6, 40, 30, swapRedAndBlue); }},
              {"another colour", kGdiPlus, kClose,
               [&](IAGDC& p) { return p.drawImageRemapped(imageOf(p).get(), 4, 6, 40, 30, &change, 1); }}};
  for (const auto& row : rows) {
    Ref<IAGDC> pages[] = {makePage(), Ref<IAGDC>::adopt(plain->create(row.by, 0, nullptr, 64, 48))};
    for (const auto& page : pages) {
      page->setFillColor(kBlack);
      page->setLineWidth(3);
      page->setSmoothing(255);
      EXPECT_TRUE(row.draw(*page)) << row.name;
    }
    int ink = 0, apart = 0;
    for (i32 i = 0; i < 64 * 48; ++i) {
      const Color wanted = pixelOf(*pages[1], i % 64, i / 64), got = pixelOf(*pages[0], i % 64, i / 64);
      for (int shift = 0; shift < 24; shift += 8) {
        const int level = wanted >> shift & 255;
        ink += 255 - level;
        apart += std::abs(level - static_cast<int>(got >> shift & 255));
      }
      const double x = i % 64, y = i / 64;
      EXPECT_EQ(pages[0]->isPointVisible(x, y), pages[1]->isPointVisible(x, y)) << row.name << ' ' << x << ' ' << y;
      EXPECT_EQ(pages[0]->isRectVisible(x, y, 1, 1), pages[1]->isRectVisible(x, y, 1, 1))
          << row.name << ' ' << x << ' ' << y;
    }
    EXPECT_GT(ink, 30000) << row.name;
    EXPECT_LT(apart, ink / row.parts) << row.name;
  }
}

TEST(Smooth, RefusesWhatIsNoDrawing) {
  const auto page = makePage();
  page->setFillColor(kBlack);
  auto* const shading = query<IAGShading>(page.get());
  auto* const blending = query<IAGBlending>(page.get());
  const ColorStop stops[] = {{0, kBlack}, {1, kWhite}};
  const ColorStop backwards[] = {{1, kBlack}, {0, kWhite}};
  const struct {
    const char* name;
    std::function<bool()> draw;
  } rows[] = {{"no number", [&] { return page->fillRect(kNan, 0, 4, 4); }},
              {"endless", [&] { return page->line(0, 0, kInfinity, 4); }},
              {"no number in a clip", [&] { return page->clipRect(0, kNan, 1, 1); }},
              {"no region",
               [&] {
                 const auto none = reinterpret_cast<RegionHandle>(std::size_t{0x1234});
                 return page->clipRegion(none) || page->setClipRegion(none) || page->isClipEmpty();
               }},
              {"no matrix",
               [&] {
                 return page->setTransform({kNan, 0, 0, 1, 0, 0});
               }},
              {"stops backwards",
               [&] {
                 return shading->setAxialPaint(PaintUse::Fill, {0, 0}, {9, 9}, backwards, 2, 0);
               }},
              {"no stops",
               [&] {
                 return shading->setAxialPaint(PaintUse::Fill, {0, 0}, {9, 9}, nullptr, 2, 0);
               }},
              {"no stop",
               [&] {
                 return shading->setAxialPaint(PaintUse::Fill, {0, 0}, {9, 9}, stops, 0, 0);
               }},
              {"negative radius",
               [&] {
                 return shading->setRadialPaint(PaintUse::Fill, {0, 0}, -1, {9, 9}, 3, stops, 2, 0);
               }},
              {"no tile", [&] { return shading->setTilePaint(PaintUse::Fill, nullptr, {}); }},
              {"flat tile",
               [&] {
                 const auto tile = Ref<IAGImage>::adopt(page->createImage(2, 2, ColorModel::Rgb, 0));
                 return shading->setTilePaint(PaintUse::Fill, tile.get(), {1, 1, 1, 1, 0, 0});
               }},
              {"too few and too many threads, tiles that were not begun",
               [&] {
                 auto* const tiles = query<IAGTiles>(page.get());
                 return tiles->endTiles() || tiles->beginTiles(0) || tiles->beginTiles(65) || tiles->endTiles();
               }},
              {"opacity", [&] { return blending->setOpacity(1.5) || blending->setOpacity(kNan); }},
              {"no group", [&] { return blending->endGroup() || blending->endGroupAsMask(MaskBy::Alpha, kBlack); }},
              {"no mask matrix",
               [&] {
                 const auto mask = Ref<IAGImage>::adopt(page->createImage(2, 2, ColorModel::Gray, 0));
                 return blending->setSoftMask(mask.get(), {kNan, 0, 0, 1, 0, 0}, MaskBy::Alpha);
               }},
              {"no coverage", [&] {
                 return query<ITextTarget>(page.get())->paintCoverage(nullptr, 0, {0, 0, 4, 4});
               }}};
  for (const auto& row : rows) EXPECT_FALSE(row.draw()) << row.name;
  for (i32 y = 0; y < 48; ++y) {
    for (i32 x = 0; x < 64; ++x) ASSERT_EQ(grey(*page, x, y), 255u) << x << ' ' << y;
  }
}

TEST(Smooth, TakesWhatIsLargeOrFar) {
  const auto page = makePage();
  EXPECT_TRUE(page->line(-1e9, 24, 1e9, 24));
  EXPECT_NEAR(grey(*page, 30, 23), 128, 2);
  page->clear();
  // Dashes that nobody could see, of a line that is 14 million pixels long.
  std::vector<Point> zigzag;
  for (int i = 0; i < 2000; ++i) zigzag.push_back({i % 2 ? 4000.0 : -3000.0, i * 0.02});
  const double fine[] = {0.06};
  EXPECT_TRUE(page->setDash(fine, 1, 0) && page->strokePolyline(zigzag.data(), 2000) && page->setDash(nullptr, 0, 0));
  EXPECT_EQ(grey(*page, 30, 20), 0u);
  page->clear();
  // Curves of 10^10 pixels, as wide as that: drawn to a tenth of a pixel they take minutes.
  EXPECT_TRUE(page->setTransform({1, 0, 0, 1e8, 0, 0}) && page->setLineWidth(200) && page->setLineCap(kCapRound) &&
              page->beginPath() && page->moveTo(30, 0));
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(page->curveTo(-99, i % 2 ? 90 : 70, 99, i % 2 ? -90 : -70, 30, 0.01 * i));
  EXPECT_TRUE(page->drawPath(PathPaint::Stroke));
  EXPECT_TRUE(page->endPath() && page->resetTransform() && page->setLineWidth(1));
  EXPECT_EQ(grey(*page, 30, 20), 0u);
  page->clear();
  // A million points that cross two million pixels; and such that would cross too many to be kept.
  for (const double reach : {1.5, 60.0}) {
    EXPECT_TRUE(page->beginPath() && page->moveTo(2, 2));
    for (int i = 0; i < 1000000; ++i) page->lineTo(2 + i % 2 * reach, 2 + i % 40 + i % 3);
    EXPECT_EQ(page->drawPath(PathPaint::Fill) && page->drawPath(PathPaint::Fill), reach < 2) << reach;
    EXPECT_TRUE(page->endPath());
  }
  auto* const blending = query<IAGBlending>(page.get());
  i32 depth = 0;
  while (depth < 1000 && blending->beginGroup()) ++depth;
  EXPECT_EQ(depth, 64);
  EXPECT_EQ(page->deviceContext(), nullptr);
  EXPECT_TRUE(page->fillRect(0, 0, 64, 48));
  while (blending->groupDepth()) EXPECT_TRUE(blending->endGroup());
  EXPECT_EQ(grey(*page, 5, 5), 0u);
}

TEST(Smooth, GradientsOfAnyLengthHaveTheirColours) {
  const struct {
    double from, to;  // along x
    u32 level;        // at 32; 255: nothing is painted
  } rows[] = {{0, 64, 120},  {5, 5, 255},          {0, 1e-160, 200},         {0, 5e-324, 200},
              {64, 50, 200}, {-1e300, 1e300, 120}, {-1.7e308, 1.7e308, 255}, {1e300, 1.1e300, 40},
              {1e-9, 0, 40}};
  const auto page = makePage();
  auto* const shading = query<IAGShading>(page.get());
  const ColorStop stops[] = {{0, rgb(40, 40, 40)}, {1, rgb(200, 200, 200)}};
  for (const auto& row : rows) {
    page->clear();
    EXPECT_TRUE(
        shading->setAxialPaint(PaintUse::Fill, {row.from, 3}, {row.to, 3}, stops, 2, kExtendStart | kExtendEnd) &&
        shading->paintAll());
    EXPECT_NEAR(grey(*page, 32, 24), row.level, 2) << row.from << ' ' << row.to;
    EXPECT_TRUE(shading->setRadialPaint(PaintUse::Fill, {row.from, 3}, 1, {row.to, 3}, 1e300, stops, 2, 0) &&
                shading->paintAll());  // whatever it shows
  }
}

TEST(Smooth, GroupsAndMasksComeBackToWhatWas) {
  const auto page = makePage();
  auto* const blending = query<IAGBlending>(page.get());
  const Color red = rgb(255, 0, 0);
  EXPECT_TRUE(blending->setOpacity(0.5) && page->clipRect(0, 0, 32, 48) && page->saveClip());
  EXPECT_TRUE(blending->beginGroup() && !page->restoreClip() && page->resetClip() && page->setFillColor(red));
  EXPECT_EQ(blending->opacity(), 1);
  EXPECT_TRUE(page->fillRect(0, 0, 64, 48) && page->fillRect(0, 0, 64, 48) && blending->endGroup());
  EXPECT_EQ(blending->opacity(), 0.5);
  Color color = 0;
  EXPECT_TRUE(page->getPixel(10, 10, &color));
  EXPECT_NEAR(greenOf(color), 127, 1);
  EXPECT_EQ(grey(*page, 40, 10), 255u);
  EXPECT_TRUE(page->restoreClip() && page->resetClip() && blending->setOpacity(1) && page->setFillColor(kBlack));
  const auto mask = Ref<IAGImage>::adopt(page->createImage(2, 1, ColorModel::Gray, 0));
  mask->row(0)[0] = 255;
  EXPECT_EQ(page->setInterpolation(0), 0);
  EXPECT_TRUE(blending->setSoftMask(mask.get(), Matrix::scaling(64, 48), MaskBy::Luminosity) &&
              page->fillRect(0, 0, 64, 48));
  EXPECT_EQ(grey(*page, 10, 10), 0u);
  EXPECT_EQ(grey(*page, 40, 10), 255u);
}

// On a device context of the caller's: what is there stays, what changed is copied when the device is needed.
TEST(Smooth, ScreenContextsCopyWhatChanged) {
  const auto target = makePage();
  target->fillRect(0, 0, 8, 8);
  const HDC device = target->deviceContext();
  SetViewportOrgEx(device, 2, 1, nullptr);
  const auto page = Ref<IAGDC>::adopt(creator(false).create(0, 0, device, 32, 32));
  ASSERT_TRUE(page);
  EXPECT_TRUE(page->setFillColor(argb(128, 255, 255, 255)) && page->fillRect(0, 0, 4, 4));
  EXPECT_TRUE(page->clipRect(0, 0, 20, 20) && page->setOrigin(3, 3));
  EXPECT_EQ(page->deviceContext(), device);
  EXPECT_EQ(GetRValue(GetPixel(device, 0 - 3, 0 - 3)), 128);
  SetPixelV(device, 4, 4, RGB(1, 2, 3));  // the context's origin applies
  EXPECT_TRUE(page->setOrigin(0, 0));
  Color color = 0;
  EXPECT_TRUE(page->getPixel(7, 7, &color));
  EXPECT_EQ(color, rgb(1, 2, 3));
  EXPECT_TRUE(page->fillRect(7, 7, 1, 1) && page->detach() && !page->fillRect(0, 0, 1, 1));
  EXPECT_NEAR(GetRValue(GetPixel(device, 7, 7)), 128, 1);
  POINT origin;
  GetViewportOrgEx(device, &origin);
  EXPECT_EQ(origin.x, 2);
}

TEST(Smooth, TenThousandContextsLeaveNothing) {
  const Color pixels[4] = {kBlack, kWhite, kBlack, kWhite};
  int count = 0;
  const auto once = [&] {
    const auto page = makePage(16, 16);
    const auto tile = Ref<IAGImage>::adopt(page->createImage(2, 2, ColorModel::Argb, 0));
    std::copy_n(pixels, 4, reinterpret_cast<Color*>(tile->row(0)));
    auto* const blending = query<IAGBlending>(page.get());
    page->beginPath();
    page->rectangle(1.5, 1.5, 9, 9);
    page->saveClip();
    page->clipPath();
    blending->beginGroup();
    query<IAGShading>(page.get())->setTilePaint(PaintUse::Fill, tile.get(), Matrix::scaling(4, 4));
    page->drawPath(PathPaint::FillAndStroke);
    if (++count % 2) blending->endGroup();
    page->deviceContext();
  };
  once();
  const int freeBefore = freeGdiObjects();
  const std::size_t blocksBefore = heapBlocksInUse();
  for (int i = 0; i < 10000; ++i) once();
  EXPECT_EQ(freeGdiObjects(), freeBefore);
  EXPECT_LE(heapBlocksInUse(), blocksBefore + 2);
}

Ref<IAGImage> pictureOf(IAGDC& page) {
  auto image = Ref<IAGImage>::adopt(page.createImage(64, 48, ColorModel::Argb, 0));
  EXPECT_TRUE(image && image->captureFrom(page, 0, 0));
  return image;
}
bool areSame(IAGImage& a, IAGImage& b) { return std::memcmp(a.row(0), b.row(0), std::size_t{4} * 64 * 48) == 0; }

// Between drawings that are collected, whatever else reaches the pixels.
TEST(Smooth, TilesKeepTheOrderOfWhatIsDrawn) {
  const auto target = makePage();
  const u8 pattern[8] = {0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55};
  const struct {
    const char* name;
    std::function<bool(IAGDC&)> between;
  } rows[] = {{"nothing", [](IAGDC&) { return true; }},
              {"a pixel", [](IAGDC& page) { return page.setPixel(20, 20, kWhite); }},
              {"GDI", [](IAGDC& page) { return SetPixelV(page.deviceContext(), 20, 20, RGB(9, 9, 9)) != 0; }},
              {"a frame",
               [](IAGDC& page) {
                 return page.xorRect({10, 10, 40, 40});
               }},
              {"clear", [](IAGDC& page) { return page.clear(); }},
              {"a copy", [&](IAGDC& page) { return page.copyTo(target->deviceContext(), 0, 0); }},
              {"a pattern", [&](IAGDC& page) { return page.patternRectPixel(8, 8, 30, 30, pattern); }},
              {"a group",
               [](IAGDC& page) {
                 auto* const blending = query<IAGBlending>(&page);
                 return blending->setOpacity(0.5) && blending->beginGroup() && page.fillRect(4.5, 4, 40, 40) &&
                        blending->endGroup() && blending->setOpacity(1);
               }},
              {"a clip, an image", [](IAGDC& page) {
                 const auto image = Ref<IAGImage>::adopt(page.createImage(9, 9, ColorModel::Gray, 0));
                 return page.clipRect(2.5, 2.5, 50, 40) && page.drawImage(image.get(), 7, 7, 9, 9) &&
                        page.drawImage(image.get(), 20.5, 20.5, 30, 30);
               }}};
  const auto draw = [](IAGDC& page, const std::function<bool(IAGDC&)>& between) {
    for (int i = 0; i < 3; ++i) {
      page.setFillColor(rgb(200 - 50 * static_cast<u32>(i), 80 * static_cast<u32>(i), 40));
      if (!page.fillEllipse(20 + 9 * i, 20 + 3 * i, 22, 19) || (i == 1 && !between(page))) return false;
    }
    return true;
  };
  for (const auto& row : rows) {
    const auto plain = makePage();
    ASSERT_TRUE(draw(*plain, row.between)) << row.name;
    const auto expected = pictureOf(*plain);
    for (const i32 threads : {1, 2, 3, 8}) {
      const auto page = makePage();
      auto* const tiles = query<IAGTiles>(page.get());
      EXPECT_TRUE(tiles->beginTiles(threads) && !tiles->beginTiles(2) && draw(*page, row.between)) << row.name;
      EXPECT_TRUE(threads == 3 || tiles->endTiles());
      EXPECT_TRUE(areSame(*pictureOf(*page), *expected)) << row.name << ' ' << threads;
    }
  }
  const auto page = makePage();
  EXPECT_TRUE(query<IAGTiles>(page.get())->beginTiles(2) && page->fillRect(0, 0, 64, 48) && page->detach());
  EXPECT_FALSE(query<IAGTiles>(page.get())->beginTiles(2));
}

// Refuses the n-th allocation of the modules: the library's heap, and the language's library.
std::atomic<int> allocationsLeft = 0;
void* refusingMalloc(std::size_t size) {
  return allocationsLeft > 0 && --allocationsLeft == 0 ? nullptr : std::malloc(size);
}

TEST(Smooth, WithoutMemoryNothingIsLeftBehind) {
  using Malloc = void* (*)(std::size_t);
  const auto slotOf = [](const wchar_t* module) -> Malloc& {
    return *reinterpret_cast<Malloc*>(importSlotOf(GetModuleHandleW(module), "malloc"));
  };
  const auto everything = [](IAGDC& page) {
    const auto tile = Ref<IAGImage>::adopt(page.createImage(40, 30, ColorModel::Argb, 0));
    auto* const blending = query<IAGBlending>(&page);
    auto* const shading = query<IAGShading>(&page);
    const ColorStop stops[] = {{0, kBlack}, {1, kWhite}};
    const double dashes[] = {5, 2};
    page.saveClip();
    page.beginPath();
    page.rectangle(2.5, 2.5, 50, 40);
    page.clipPath();
    page.setDash(dashes, 2, 0);
    shading->setAxialPaint(PaintUse::Fill, {0, 0}, {60, 40}, stops, 2, 0);
    page.drawPath(PathPaint::FillAndStroke);
    page.endPath();
    const bool isOpen = blending->beginGroup();
    shading->setTilePaint(PaintUse::Fill, tile.get(), {9, 1, -1, 9, 0, 0});
    page.fillEllipse(30, 20, 15, 12);
    if (tile) page.drawImageTransformed(tile.get(), {30, 5, -5, 30, 10, 5});
    if (isOpen) blending->endGroupAsMask(MaskBy::Luminosity, kWhite);
    page.excludeRect(5.5, 5.5, 10, 10);
    page.deviceContext();
    blending->setSoftMask(nullptr, {}, MaskBy::Alpha);
    page.restoreClip();
    page.setDash(nullptr, 0, 0);
  };
  everything(*makePage());
  const ImportSlot<Malloc> library(slotOf(L"corvix.dll"), refusingMalloc);
  const ImportSlot<Malloc> language(slotOf(L"libstdc++-6.dll"), refusingMalloc);
  std::size_t blocks[2];
  for (std::size_t& inUse : blocks) {  // the second time nothing is made for good
    int n = 1;
    for (bool isHit = true; isHit && n < 5000; ++n) {
      const auto page = makePage();
      allocationsLeft = n;
      everything(*page);
      isHit = allocationsLeft <= 0;
      allocationsLeft = 0;
      ASSERT_EQ(query<IAGBlending>(page.get())->groupDepth(), 0) << n;
      ASSERT_TRUE(page->resetClip() && page->setFillColor(kBlack) && page->fillEllipse(32, 24, 20, 20)) << n;
      ASSERT_EQ(grey(*page, 32, 24), 0u) << n;
    }
    EXPECT_GT(n, 20);
    inUse = heapBlocksInUse();
  }
  EXPECT_EQ(blocks[0], blocks[1]);
}

// By several threads all is drawn or nothing, whatever thread found no memory.
TEST(Smooth, TilesWithoutMemoryDrawNothing) {
  using Malloc = void* (*)(std::size_t);
  const auto slotOf = [](const wchar_t* module) -> Malloc& {
    return *reinterpret_cast<Malloc*>(importSlotOf(GetModuleHandleW(module), "malloc"));
  };
  const auto white = pictureOf(*makePage());
  bool isCollected = false;
  const auto draw = [&](IAGDC& page) {
    auto* const tiles = query<IAGTiles>(&page);
    isCollected = tiles->beginTiles(3);
    for (int i = 0; i < 16; ++i) isCollected = page.fillEllipse(10 + 3 * i, 24, 9, 22) && isCollected;
    return tiles->endTiles();
  };
  const auto whole = makePage();
  ASSERT_TRUE(draw(*whole));
  const auto expected = pictureOf(*whole);
  const ImportSlot<Malloc> library(slotOf(L"corvix.dll"), refusingMalloc);
  const ImportSlot<Malloc> language(slotOf(L"libstdc++-6.dll"), refusingMalloc);
  std::size_t blocks[4];
  for (std::size_t& inUse : blocks) {
    int lost = 0;
    bool isHit = true;
    for (int n = 1; isHit && n < 5000; ++n) {
      const auto page = makePage();
      allocationsLeft = n;
      const bool isDrawn = draw(*page);
      isHit = allocationsLeft <= 0;
      allocationsLeft = 0;
      if (!isCollected) continue;
      if (!isDrawn) ++lost;
      ASSERT_TRUE(areSame(*pictureOf(*page), isDrawn ? *expected : *white)) << n;
    }
    EXPECT_GT(lost, 5);
    inUse = heapBlocksInUse();
  }
  EXPECT_LE(blocks[3], blocks[0] + 2);  // threads that end leave now one, now none
}

TEST(SmoothSpans, Sse2WritesTheSameBytes) {
  if (&smooth::spans() != &smooth::kSse2Spans) GTEST_SKIP() << "this processor has no SSE2";
  std::mt19937 random(11);
  for (int round = 0; round < soak(3000, 100000); ++round) {
    const std::size_t room = round % 8 == 5 ? 600 : 40;
    const auto count = static_cast<i32>(random() % room);
    std::vector<smooth::Pixel> to(room), from(room), colors(room);
    std::vector<u8> covers(room), others(room);
    for (std::size_t i = 0; i < room; ++i) {
      to[i] = smooth::toPixel(random());
      from[i] = smooth::toPixel(random() % 4 ? random() : random() | kBlack);
      colors[i] = round % 3 ? random() : random() | kBlack;
      covers[i] = static_cast<u8>(random() % 3 ? random() : random() % 2 * 255);
      others[i] = static_cast<u8>(random());
    }
    const smooth::Pixel pixel = from[0];
    const auto run = [&](const smooth::SpanLoops& loops) {
      auto pixels = to;
      auto bytes = covers;
      switch (round % 8) {
        case 0:
          loops.fill(pixels.data() + 1, count ? count - 1 : 0, pixel);
          break;
        case 1:
          loops.overOne(pixels.data(), count, pixel);
          break;
        case 2:
          loops.overOneCovered(pixels.data(), bytes.data(), count, pixel);
          break;
        case 3:
          loops.overMany(pixels.data(), from.data(), count);
          break;
        case 4:
          loops.overManyCovered(pixels.data(), from.data(), bytes.data(), count);
          break;
        case 5:
          loops.overColors(pixels.data(), colors.data(), count);
          break;
        case 6:
          loops.multiply(bytes.data(), others.data(), count);
          break;
        default:
          loops.multiplyOne(bytes.data(), others[0], count);
      }
      return std::pair(pixels, bytes);
    };
    ASSERT_EQ(run(smooth::kScalarSpans), run(smooth::kSse2Spans)) << round;
  }
}

}  // namespace
}  // namespace corvix
