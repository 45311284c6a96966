// The smooth contexts through the plug-in manager: nothing of them is linked but the loops over pixels.
#include "core/baselib/objects/Ref.h"
#include "graphics/Blending.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/Shading.h"
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

u32 grey(IAGDC& page, i32 x, i32 y) {
  Color color = 0;
  EXPECT_TRUE(page.getPixel(x, y, &color));
  return redOf(color);
}

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

// Refuses the n-th allocation of the modules: the library's heap, and the language's library.
int allocationsLeft = 0;
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
      isHit = allocationsLeft == 0;
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
