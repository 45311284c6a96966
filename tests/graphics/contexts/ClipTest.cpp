// Clips in both kinds of context, by what they let through, and the calls that GDI+ gets.
#include "graphics/gdi/Gdi_p.h"
#include "graphics/quality/Quality_p.h"
#include "tests/graphics/Pages.h"

namespace corvix {
namespace {

using namespace testing_support;

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
    {"rectangle far out", [](IAGDC& page) { return page.clipRect(-1e8, -1e8, 2e8, 1e8 + 20); }, true, 64 * 20},
    {"once more", [](IAGDC& page) { return page.resetClip(); }, true, kAll},
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
    EXPECT_FALSE(page->isRectVisible(8, 8, HUGE_VAL, 30)) << "no coordinate";
    // Pixels and runs of them obey it too.
    EXPECT_TRUE(page->setPixel(6, 6, kBlack));
    EXPECT_FALSE(page->setPixel(3, 6, kBlack));
    EXPECT_TRUE(page->dottedRow(-100000000, 100000000, 7, kBlack, rgb(0, 0, 1)));
    EXPECT_EQ(countPainted(*page), 6);
    EXPECT_EQ(pixelOf(*page, 6, 7), kBlack);
    EXPECT_EQ(pixelOf(*page, 7, 7), rgb(0, 0, 1));
  }
}

// Each on a page of its own.
struct LoneStep {
  const char* name;
  std::function<bool(IAGDC&)> act;
  int visible;
};
const LoneStep kLoneSteps[] = {
    {"stroke far outside",
     [](IAGDC& page) {
       return page.beginPath() && page.moveTo(1e6, 1e6) && page.lineTo(2e6, 1e6) && page.clipStroke();
     },
     0},
    {"dashed stroke far outside",
     [](IAGDC& page) {
       const double dashes[] = {3, 2};
       return page.setDash(dashes, 2, 0) && page.beginPath() && page.moveTo(1e6, 1e6) && page.lineTo(2e6, 1e6) &&
              page.clipStroke();
     },
     0},
    {"stroke of a path that only moves",
     [](IAGDC& page) { return page.beginPath() && page.moveTo(5, 5) && page.clipStroke(); }, 0},
    {"stroke of the thinnest width",
     [](IAGDC& page) {
       return page.setLineWidth(0) && page.beginPath() && page.moveTo(10, 5) && page.lineTo(20, 5) && page.clipStroke();
     },
     10},
    {"fill far outside",
     [](IAGDC& page) { return page.beginPath() && page.rectangle(1e6, 0, 9, 9) && page.clipPath(); }, 0},
    {"polygon far outside",
     [](IAGDC& page) {
       const Point corners[] = {{1e6, 0}, {2e6, 0}, {2e6, 9}};
       return page.clipPolygon(corners, 3);
     },
     0},
    {"rectangle from its other corner", [](IAGDC& page) { return page.clipRect(30, 30, -20, -10); }, 200},
    {"the same in pixels",
     [](IAGDC& page) {
       return page.clipRectPixel({30, 30, 10, 20});
     },
     200},
    {"path without anything in it",
     [](IAGDC& page) { return page.beginPath() && !page.clipPath() && !page.clipStroke(); }, kAll},
    {"hole from its other corner", [](IAGDC& page) { return page.excludeRect(30, 30, -20, -10); }, kAll - 200},
};

TEST(Clip, LoneStepsLetThroughWhatTheyShould) {
  for (const Through through : kBoth) {
    for (const LoneStep& step : kLoneSteps) {
      const Ref<IAGDC> page = makePage(through);
      EXPECT_TRUE(step.act(*page)) << nameOf(through) << ", " << step.name;
      EXPECT_EQ(letThrough(*page), step.visible) << nameOf(through) << ", " << step.name;
    }
  }
}

TEST(Clip, IsGoneAfterDetachWithAllThatWasSaved) {
  const Ref<IAGDC> target = makePage(Through::Gdi);
  for (const u32 wanted : {0u, capability::kGdiPlus}) {
    const auto context =
        Ref<IAGDC>::adopt(make<QuillScreenDCCreator>()->create(wanted, 0, target->deviceContext(), 64, 48));
    EXPECT_TRUE(context->clipRect(0, 0, 9, 9) && context->saveClip() && context->clipRect(0, 0, 5, 5) &&
                context->saveClip() && context->detach());
    EXPECT_EQ(context->savedClipCount(), 0) << wanted;
    EXPECT_EQ(context->copyClipRegion(), nullptr) << wanted;
    EXPECT_TRUE(context->attach(target->deviceContext(), 64, 48));
    EXPECT_FALSE(context->restoreClip()) << wanted;
    EXPECT_EQ(letThrough(*context), kAll) << wanted;
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

// Narrower with every level, and every level again on the way back. Holes and paths make regions that are no
// rectangles.
TEST(Clip, TenThousandDeep) {
  struct Row {
    const char* name;
    int levels;
    std::function<bool(IAGDC&, int level)> narrow;
  };
  const Row rows[] = {
      {"rectangles", 10000, [](IAGDC& page, int level) { return page.clipRect(level / 200, 0, 500, 500); }},
      {"fractions", 1000, [](IAGDC& page, int level) { return page.clipRect(level / 20 + 0.25, 0, 500, 500); }},
      {"holes", 1000, [](IAGDC& page, int level) { return page.excludeRect((level - 1) / 20, -1, 1, 500); }},
      {"paths", 1000,
       [](IAGDC& page, int level) {
         const Point corners[] = {{level / 20 + 0.0, -1.0}, {500, -1}, {500, 500}, {level / 20 + 0.0, 500}};
         return page.clipPolygon(corners, 4);
       }},
  };
  for (const Through through : kBoth) {
    for (const Row& row : rows) {
      const Ref<IAGDC> page = makePage(through);
      page->fillRect(0, 0, 1, 1);  // there is a Graphics that follows
      bool isDone = true;
      for (int level = 1; level <= row.levels; ++level) isDone = page->saveClip() && row.narrow(*page, level) && isDone;
      EXPECT_TRUE(isDone) << nameOf(through) << ", " << row.name;
      EXPECT_EQ(page->savedClipCount(), row.levels);
      const int last = letThrough(*page);
      for (int level = row.levels; level > row.levels / 2; --level) isDone = page->restoreClip() && isDone;
      EXPECT_EQ(letThrough(*page), 48 * (64 - 25)) << nameOf(through) << ", " << row.name;
      EXPECT_EQ(last, 48 * (64 - 50)) << nameOf(through) << ", " << row.name;
      while (page->restoreClip()) {
      }
      EXPECT_EQ(letThrough(*page), kAll) << nameOf(through) << ", " << row.name;
    }
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
}  // namespace corvix
