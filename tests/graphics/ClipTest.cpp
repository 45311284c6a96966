// Clips in both kinds of context, by what they let through, and the calls that GDI+ gets.
#include "graphics/gdi/Gdi.h"
#include "graphics/quality/Quality.h"
#include "tests/graphics/GraphicsTesting.h"

namespace corvix::testing {
namespace {

// Fills everything black and says how many pixels were let through; white again afterwards.
int letThrough(IAGDC& page) {
  page.setFillColor(kBlack);
  page.fillRect(-100, -100, 300, 300);
  const int count = countPainted(page);
  page.clear();
  return count;
}

struct Step {
  const char* name;
  std::function<bool(IAGDC&)> act;
  bool answer;
  int visible;  // pixels afterwards, of 64 by 48
};
constexpr int kAll = 64 * 48;
const Step kSteps[] = {
    {"nothing saved", [](IAGDC& page) { return page.restoreClip(); }, false, kAll},
    {"reset of nothing", [](IAGDC& page) { return page.resetClip(); }, true, kAll},
    {"first rectangle", [](IAGDC& page) { return page.clipRect(10, 10, 20, 20); }, true, 400},
    {"restore leaves it", [](IAGDC& page) { return page.restoreClip(); }, false, 400},
    {"save", [](IAGDC& page) { return page.saveClip(); }, true, 400},
    {"narrower",
     [](IAGDC& page) {
       return page.clipRectPixel({20, 20, 60, 40});
     },
     true, 100},
    {"save again", [](IAGDC& page) { return page.saveClip(); }, true, 100},
    {"reset right after save", [](IAGDC& page) { return page.resetClip(); }, true, kAll},
    {"the saved one is back", [](IAGDC& page) { return page.restoreClip(); }, true, 100},
    {"and the one before unchanged", [](IAGDC& page) { return page.restoreClip(); }, true, 400},
    {"twice saved", [](IAGDC& page) { return page.saveClip() && page.saveClip(); }, true, 400},
    {"hole", [](IAGDC& page) { return page.excludeRect(12, 12, 4, 4); }, true, 384},
    {"back once", [](IAGDC& page) { return page.restoreClip(); }, true, 400},
    {"back twice", [](IAGDC& page) { return page.restoreClip(); }, true, 400},
    {"no third", [](IAGDC& page) { return page.restoreClip(); }, false, 400},
    {"empty", [](IAGDC& page) { return page.clipRect(50, 40, 3, 3) && page.isClipEmpty(); }, true, 0},
    {"no number", [](IAGDC& page) { return page.clipRect(std::nan(""), 0, 1, 1); }, false, 0},
    {"reset", [](IAGDC& page) { return page.resetClip(); }, true, kAll},
    {"polygon far out",
     [](IAGDC& page) {
       const Point corners[] = {{-1e9, -1e9}, {1e9, -1e9}, {1e9, 20}, {-1e9, 20}};
       return page.clipPolygon(corners, 4);
     },
     true, 64 * 20},
    {"region",
     [](IAGDC& page) {
       const gdi::Region region(CreateRectRgn(0, 0, 10, 10));
       return page.setClipRegion(region.get());
     },
     true, 100},
    {"region more",
     [](IAGDC& page) {
       const gdi::Region region(CreateRectRgn(5, 5, 20, 20));
       return page.clipRegion(region.get());
     },
     true, 25},
};

TEST(Clip, StepsLetThroughWhatTheyShould) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    for (const Step& step : kSteps) {
      EXPECT_EQ(step.act(*page), step.answer) << nameOf(through) << ", " << step.name;
      EXPECT_EQ(letThrough(*page), step.visible) << nameOf(through) << ", " << step.name;
    }
    Box bounds;
    EXPECT_TRUE(page->clipBounds(&bounds));
    EXPECT_EQ(bounds.left, 5);
    EXPECT_EQ(bounds.bottom, 10);
    EXPECT_TRUE(page->isPointVisible(7, 7));
    EXPECT_FALSE(page->isPointVisible(12, 7));
    EXPECT_TRUE(page->isRectVisible(8, 8, 30, 30));
    EXPECT_FALSE(page->isRectVisible(12, 8, 30, 30));
    // Pixels and runs of them obey it too.
    EXPECT_TRUE(page->setPixel(6, 6, kBlack));
    EXPECT_FALSE(page->setPixel(3, 6, kBlack));
    EXPECT_TRUE(page->dottedRow(-100000000, 100000000, 7, kBlack, rgb(0, 0, 1)));
    EXPECT_EQ(countPainted(*page), 6);
    EXPECT_EQ(pixelOf(*page, 6, 7), kBlack);
    EXPECT_EQ(pixelOf(*page, 7, 7), rgb(0, 0, 1));
  }
}

TEST(Clip, AMillionSavedClips) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    page->clipRect(0, 0, 10, 10);
    for (int i = 0; i < 1000000; ++i) ASSERT_TRUE(page->saveClip());
    EXPECT_EQ(page->savedClipCount(), 1000000);
    page->clipRect(0, 0, 5, 5);
    EXPECT_TRUE(page->restoreClip());
    EXPECT_EQ(letThrough(*page), 100) << nameOf(through);
  }
}

// Numbers that do not fit draw nothing, whether they are clipped in software or not.
TEST(Clip, NumbersThatDoNotFitDrawNothing) {
  const double kBad[] = {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e308};
  for (const bool isSoftware : {true, false}) {
    quality().softwareClipping = isSoftware;
    for (const Through through : kBoth) {
      for (const double bad : kBad) {
        const Ref<IAGDC> page = makePage(through);
        const Point points[] = {{1, 1}, {bad, 2}, {3, 3}};
        const double dashes[] = {bad, 1};
        EXPECT_TRUE(!page->line(1, 1, -bad, bad) || isSoftware) << nameOf(through) << bad;
        EXPECT_TRUE(!page->curveTo(1, 1, bad, 1, 3, 3) || isSoftware);
        EXPECT_TRUE(!page->strokePolyline(points, 3) || isSoftware);
        EXPECT_FALSE(page->setPixelAt(bad, 1, kBlack));
        EXPECT_FALSE(page->setLineWidth(bad));
        EXPECT_FALSE(page->setOrigin(bad, 0));
        EXPECT_TRUE(!std::isfinite(bad) ? !page->setDash(dashes, 2, 0) : true);
        EXPECT_FALSE(page->setTransform({bad, 0, 0, 1, 0, 0}));
        if (!std::isfinite(bad)) {
          EXPECT_FALSE(page->moveTo(bad, 1));
          EXPECT_EQ(countPainted(*page), 0) << nameOf(through) << bad;
        }
      }
    }
  }
  quality().softwareClipping = true;
}

TEST(Clip, PathsOfAMillionPoints) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    page->setFillColor(kBlack);
    page->beginPath();
    page->moveTo(0, 0);
    for (int i = 0; i < 1000000; ++i) ASSERT_TRUE(page->lineTo(1e6 * std::cos(i * 1e-6), 1e6 * std::sin(i * 1e-6)));
    EXPECT_TRUE(page->closePath() && page->drawPath(PathPaint::Fill)) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 40, 20), kBlack) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 20, 45), kWhite) << nameOf(through);  // beyond the last ray, at one radian
  }
}

}  // namespace
}  // namespace corvix::testing
