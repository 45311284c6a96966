// What GDI+ is asked for, call by call, and what happens when it refuses. Pixels cannot tell these under an emulation
// that ignores smoothing and pen transforms.
#include "graphics/gdi/Gdi_p.h"
#include "graphics/gdiplus/GdiPlusTable_p.h"
#include "graphics/quality/Quality_p.h"
#include "tests/graphics/GdiObjects.h"
#include "tests/graphics/Pages.h"

#include <set>
#include <sstream>

namespace corvix {
namespace {

using namespace testing_support;

using gdiplus::Table;

// A table that writes down every call and can refuse one.
struct Recorder {
  static inline const Table* real = nullptr;
  static inline std::vector<std::string> calls;
  static inline int refuseAt = -1;  // that many calls from now

  Recorder() {
    real = gdiplus::table();
    static Table hooked;
#define CORVIX_HOOK(name) hooked.name = &Hook<&Table::name>::call;
    CORVIX_GDIPLUS_FUNCTIONS(CORVIX_HOOK)
    CORVIX_HOOK(GdiplusStartup)
    CORVIX_HOOK(GdiplusShutdown)
#undef CORVIX_HOOK
    calls.clear();
    refuseAt = -1;
    gdiplus::replaceTable(&hooked);
  }
  ~Recorder() { gdiplus::replaceTable(nullptr); }

  template <auto member>
  struct Hook;
  template <class Result, class... Arguments, Result (WINAPI* Table::*member)(Arguments...)>
  struct Hook<member> {
    static Result WINAPI call(Arguments... arguments) {
      const bool isRefused = refuseAt >= 0 && refuseAt-- == 0;
      note(member, arguments...);
      // What gives something back always does.
      if constexpr (std::is_same_v<Result, Gdiplus::GpStatus>) {
        if (isRefused && !isRelease(member)) return Gdiplus::GenericError;
      } else if constexpr (std::is_pointer_v<Result>) {
        if (isRefused) return nullptr;
      }
      return (real->*member)(arguments...);
    }
  };

  template <class Member>
  static bool isRelease(Member member) {
    const std::string name = nameOf(member);
    return name.find("Delete") != std::string::npos || name.find("Dispose") != std::string::npos ||
           name.find("Unlock") != std::string::npos;
  }

  template <class Member>
  static std::string nameOf(Member member) {
    // NOLINTNEXTLINE: the address in the table is the identity
#define CORVIX_NAME(name)                                       \
  if constexpr (std::is_same_v<Member, decltype(&Table::name)>) \
    if (member == &Table::name) return #name;
    CORVIX_GDIPLUS_FUNCTIONS(CORVIX_NAME)
    CORVIX_NAME(GdiplusStartup)
    CORVIX_NAME(GdiplusShutdown)
#undef CORVIX_NAME
    return "?";
  }

  template <class T>
  static void addNumber(std::ostringstream& text, T value) {
    if constexpr (std::is_floating_point_v<T> || std::is_enum_v<T> || std::is_same_v<T, int>) {
      text << ' ' << +value;
    }
  }
  template <class Member, class... Arguments>
  static void note(Member member, Arguments... arguments) {
    std::ostringstream text;
    text << nameOf(member);
    (addNumber(text, arguments), ...);
    calls.push_back(text.str());
  }

  // The calls so far, without those named, and forgets them.
  static std::vector<std::string> take(const std::string& without = "GdipAlloc GdipFree") {
    std::vector<std::string> taken;
    for (const std::string& one : calls) {
      if (without.find(one.substr(0, one.find(' '))) == std::string::npos) taken.push_back(one);
    }
    calls.clear();
    return taken;
  }
};

using Calls = std::vector<std::string>;

class FlatCalls : public testing::Test {
 protected:
  FlatCalls() {
    gdiplus::assumePenTransformsWork(true);
    device_.reset(CreateCompatibleDC(nullptr));
  }
  ~FlatCalls() override { gdiplus::assumePenTransformsWork(false); }

  Ref<IAGDC> makeContext() {
    return Ref<IAGDC>::adopt(make<QuillScreenDCCreator>()->create(capability::kGdiPlus, 0, device_.get(), 1, 1));
  }

  gdi::MemoryDevice device_;
  Recorder recorder_;
};

TEST_F(FlatCalls, LifeOfAContext) {
  Ref<IAGDC> context = makeContext();
  EXPECT_EQ(Recorder::take(), (Calls{"GdiplusStartup", "GdipCreateMatrix2 1 0 0 1 0 0", "GdipCreatePen1 10 0",
                                     "GdipScalePenTransform 0.1 0.1 1", "GdipCreateSolidFill"}));
  context->fillRect(0, 0, 1, 1);
  Recorder::take();
  context.reset();
  Calls end = Recorder::take();
  EXPECT_EQ(end.back(), "GdiplusShutdown");
  std::sort(end.begin(), end.end());
  EXPECT_EQ(end, (Calls{"GdipDeleteBrush", "GdipDeleteGraphics", "GdipDeleteMatrix", "GdipDeletePath", "GdipDeletePen",
                        "GdiplusShutdown"}));
}

TEST_F(FlatCalls, PreparationAndThePolyline) {
  const Ref<IAGDC> context = makeContext();
  context->setSmoothing(254);
  context->setInterpolation(64);
  context->setOrigin(3, 4);
  Recorder::take();
  const Point points[] = {{0, 0}, {5, 0}, {5, 5}};
  EXPECT_TRUE(context->strokePolyline(points, 3));
  EXPECT_EQ(Recorder::take(),
            (Calls{"GdipCreatePath 0", "GdipStartPathFigure", "GdipAddPathLine 0 0 5 0", "GdipAddPathLine 5 0 5 5",
                   "GdipCreateFromHDC", "GdipSetPageUnit 2", "GdipSetSmoothingMode 4", "GdipSetInterpolationMode 1",
                   "GdipTranslateWorldTransform 3 4 1", "GdipDrawPath"}));
  EXPECT_TRUE(context->strokePolyline(points, 3));
  EXPECT_EQ(Recorder::take(), (Calls{"GdipResetPath", "GdipStartPathFigure", "GdipAddPathLine 0 0 5 0",
                                     "GdipAddPathLine 5 0 5 5", "GdipDrawPath"}));
  // GDI and GDI+ never hold the device at the same time.
  Color color;
  const std::function<void()> gdiCalls[] = {[&] { context->getPixel(0, 0, &color); },
                                            [&] { context->setPixel(0, 0, kBlack); },
                                            [&] {
                                              context->xorRect({0, 0, 1, 1});
                                            },
                                            [&] {
                                              context->focusRect({0, 0, 1, 1});
                                            },
                                            [&] { context->copyTo(device_.get(), 0, 0); },
                                            [&] { context->dottedRow(-3, 1, -4, kBlack, kWhite); },
                                            [&] { context->deviceContext(); }};
  int number = 0;
  for (const auto& call : gdiCalls) {
    context->setOrigin(0, 0);
    context->fillRect(0, 0, 1, 1);
    if (number == 5) context->setOrigin(3, 4);
    Recorder::take();
    call();
    const Calls calls = Recorder::take();
    ASSERT_FALSE(calls.empty()) << number;
    EXPECT_EQ(calls.front(), "GdipDeleteGraphics") << number;
    ++number;
  }
}

TEST_F(FlatCalls, PenFollowsTheLineState) {
  struct Row {
    double width;
    i32 cap;
    i32 join;
    std::vector<double> dashes;
    Calls calls;
  };
  const Row rows[] = {
      {4,
       1,
       1,
       {},
       {"GdipResetPenTransform", "GdipScalePenTransform 0.4 0.4 1", "GdipSetPenLineCap197819 2 2 2",
        "GdipSetPenLineJoin 2", "GdipSetPenMiterLimit 50", "GdipSetPenDashStyle 0"}},
      {0,
       2,
       2,
       {},
       {"GdipResetPenTransform", "GdipScalePenTransform 0 0 1", "GdipSetPenLineCap197819 1 1 1", "GdipSetPenLineJoin 1",
        "GdipSetPenMiterLimit 50", "GdipSetPenDashStyle 0"}},
      {2,
       7,
       0,
       {6, 3},
       {"GdipResetPenTransform", "GdipScalePenTransform 0.2 0.2 1", "GdipSetPenLineCap197819 0 0 0",
        "GdipSetPenLineJoin 3", "GdipSetPenMiterLimit 50", "GdipSetPenDashArray 2", "GdipSetPenDashOffset 0.5"}},
  };
  const Ref<IAGDC> context = makeContext();
  for (const Row& row : rows) {
    context->setLineWidth(row.width);
    context->setLineCap(row.cap);
    context->setLineJoin(row.join);
    context->setMiterLimit(5);
    context->setDash(row.dashes.data(), static_cast<i32>(row.dashes.size()), 1);
    Recorder::take();
    context->line(0, 0, 5, 5);
    Calls pen;
    for (const std::string& call : Recorder::take()) {
      if (call.find("Pen") != std::string::npos) pen.push_back(call);
    }
    EXPECT_EQ(pen, row.calls) << row.width;
  }
  // Join and miter limit reach the pen at once.
  Recorder::take();
  context->setLineJoin(kJoinRound);
  context->setMiterLimit(3);
  EXPECT_EQ(Recorder::take(), (Calls{"GdipSetPenLineJoin 2", "GdipSetPenMiterLimit 30"}));
}

TEST_F(FlatCalls, PenIsWideWhereTransformsAreIgnored) {
  const Ref<IAGDC> context = makeContext();
  gdiplus::assumePenTransformsWork(false);
  context->setLineWidth(4);
  Recorder::take();
  context->line(0, 0, 5, 5);
  const Calls calls = Recorder::take();
  const auto scaled = std::find(calls.begin(), calls.end(), "GdipScalePenTransform 0.4 0.4 1");
  ASSERT_NE(scaled, calls.end());
  EXPECT_EQ(*(scaled + 1), "GdipSetPenWidth 4");
}

TEST_F(FlatCalls, QualityLevels) {
  struct Row {
    i32 level;
    i32 answer;
    const char* smoothing;
    const char* interpolation;
  };
  const Row rows[] = {{0, 0, "1", "5"},     {63, 0, "1", "5"},    {64, 64, "0", "1"},
                      {127, 64, "0", "1"},  {128, 128, "3", "2"}, {191, 128, "3", "2"},
                      {192, 192, "4", "3"}, {254, 192, "4", "3"}, {255, 255, "2", "7"}};
  const Ref<IAGDC> context = makeContext();
  context->fillRect(0, 0, 1, 1);  // from here on there is a Graphics
  for (const Row& row : rows) {
    Recorder::take();
    EXPECT_EQ(context->setSmoothing(row.level), row.answer);
    EXPECT_EQ(context->setInterpolation(row.level), row.answer);
    EXPECT_EQ(context->smoothing(), row.answer);
    EXPECT_EQ(context->interpolation(), row.answer);
    EXPECT_EQ(Recorder::take(), (Calls{std::string("GdipSetSmoothingMode ") + row.smoothing,
                                       std::string("GdipSetInterpolationMode ") + row.interpolation}));
  }
}

TEST_F(FlatCalls, ClipIsCopiedOnlyWhenShared) {
  const Ref<IAGDC> context = makeContext();
  context->fillRect(0, 0, 1, 1);
  Recorder::take();
  context->clipRect(1, 2, 3, 4);
  EXPECT_EQ(Recorder::take(), (Calls{"GdipCreateRegionRect", "GdipSetClipRect 1 2 3 4 1"}));
  context->saveClip();
  EXPECT_EQ(Recorder::take(), Calls{});
  context->clipRect(1, 2, 3, 4);
  EXPECT_EQ(Recorder::take(), (Calls{"GdipCloneRegion", "GdipCombineRegionRect 1", "GdipSetClipRect 1 2 3 4 1"}));
  context->clipRect(1, 2, 3, 4);
  EXPECT_EQ(Recorder::take(), (Calls{"GdipCombineRegionRect 1", "GdipSetClipRect 1 2 3 4 1"}));
  context->restoreClip();
  EXPECT_EQ(Recorder::take(), (Calls{"GdipDeleteRegion", "GdipSetClipRegion 0"}));
  context->saveClip();
  context->resetClip();
  EXPECT_EQ(Recorder::take(), (Calls{"GdipResetClip"}));  // the saved one lives on
}

TEST_F(FlatCalls, SoftwareClippingFollowsItsSetting) {
  const Ref<IAGDC> context = makeContext();
  context->fillRect(0, 0, 1, 1);
  for (const bool isSoftware : {true, false}) {
    quality().softwareClipping = isSoftware;
    Recorder::take();
    EXPECT_TRUE(context->line(-1e9, 5, 1e9, 5));
    double farthest = 0;
    for (const std::string& call : Recorder::take()) {
      if (call.rfind("GdipAddPathLine ", 0) == 0) farthest = std::max(farthest, std::abs(std::stod(call.substr(16))));
    }
    EXPECT_EQ(farthest, isSoftware ? farthest : 1e9);
    EXPECT_EQ(farthest < 1e4, isSoftware) << farthest;
  }
  quality().softwareClipping = true;
}

void drawAll(IAGDC& page) {
  const double dashes[] = {3, 2};
  page.setTransform({1, 0.5, 0, 1, 0, 0});
  page.line(0, 0, 9, 9);
  page.fillRect(0, 0, 4, 4);
  page.resetTransform();
  page.setStrokeColor(kBlack);
  page.setDash(dashes, 2, 1);
  page.drawRectangle(1, 1, 5, 5);
  page.saveClip();
  page.clipRect(1, 1, 9, 9);
  page.saveClip();
  page.excludeRect(2, 2, 2, 2);
  page.beginPath();
  page.rectangle(0, 0, 7, 7);
  page.clipPath();
  page.clipStroke();
  page.drawPath(PathPaint::FillAndStroke);
  page.endPath();
  Box bounds;
  page.clipBounds(&bounds);
  page.isClipEmpty();
  page.isPointVisible(1, 1);
  page.setPixel(1, 1, kBlack);
  page.restoreClip();
  page.restoreClip();
  const auto image = Ref<IAGImage>::adopt(page.createImage(2, 2, ColorModel::Indexed, 4));
  const float matrix[25] = {};
  const ColorChange change = {kBlack, kWhite};
  page.setInterpolation(255);
  page.drawImage(image.get(), 1, 1, 5.5, 5);
  page.drawImageMatrix(image.get(), 1, 1, 5, 5, matrix);
  page.drawImageRemapped(image.get(), 1, 1, 2, 2, &change, 1);
  page.drawImageOffscreen(image.get(), 0, 0, 3, 3);
  page.clear();
}

// A function that nothing calls would still be asked of the system's library.
TEST_F(FlatCalls, EveryFunctionOfTheTableIsCalled) {
  wchar_t folder[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  const std::wstring path = folder + std::wstring(L"corvix-flat-calls-test.png");
  {
    const Ref<IAGDC> page = makePage(Through::GdiPlus, 12, 12);
    drawAll(*page);
    const auto image = Ref<IAGImage>::adopt(page->createImage(3, 2, ColorModel::Indexed, 4));
    EXPECT_TRUE(page->drawImageTurned(image.get(), 0, 0, 2, 3, ImageTurn::Turn90FlipX));
    EXPECT_TRUE(image->saveFile(path.c_str(), ImageFile::Png) && image->loadFile(path.c_str()));
    page->resetClip();
    page->resetTransform();
    page->fillRect(1, 1, 2, 2);
    page->beginPath();
    page->rectangle(1, 1, 5, 5);
    page->clipPath();
    page->setTransform({1, 0.5, 0, 1, 0, 0});
    page->clipStroke();
    page->endPath();
    page->resetTransform();
    const gdi::Region region(CreateRectRgn(0, 0, 5, 5));
    page->clipRect(0, 0, 9, 9);
    page->clipRegion(region.get());
    page->isRectVisible(1, 1, 2, 2);
    std::vector<Point> many(300, Point{1, 1});
    page->strokePolyline(many.data(), 300);
    page->moveTo(1, 1);
    page->curveTo(1, 2, 3, 4, 5, 6);
    gdiplus::assumePenTransformsWork(false);
    page->setLineWidth(2);
    page->line(0, 0, 5, 5);
    gdiplus::forgetPenTransforms();
    makePage(Through::GdiPlus, 2, 2);
  }
  DeleteFileW(path.c_str());
  std::set<std::string> called;
  for (const std::string& call : Recorder::calls) called.insert(call.substr(0, call.find(' ')));
#define CORVIX_CALLED(name) EXPECT_EQ(called.count(#name), 1U) << #name;
  CORVIX_GDIPLUS_FUNCTIONS(CORVIX_CALLED)
#undef CORVIX_CALLED
}

TEST_F(FlatCalls, EveryCallRefusedInTurnLeavesNothing) {
  const auto once = [] {
    if (const Ref<IAGDC> page = makePage(Through::GdiPlus, 12, 12)) drawAll(*page);
  };
  once();
  const auto count = static_cast<int>(Recorder::calls.size());
  ASSERT_GT(count, 150);
  Recorder::calls.shrink_to_fit();
  const int freeBefore = freeGdiObjects();
  for (int i = 0; i < count; ++i) {
    Recorder::calls.clear();
    Recorder::refuseAt = i;
    once();
    Recorder::refuseAt = -1;
    int made = 0;  // start-ups and blocks, each given back
    for (const std::string& call : Recorder::calls) {
      made += (call == "GdiplusStartup") - (call == "GdiplusShutdown");
    }
    EXPECT_LE(made, 1) << i;  // one more when the start-up itself was refused
  }
  EXPECT_EQ(freeGdiObjects(), freeBefore);
  Recorder::calls.clear();
  const Ref<IAGDC> page = makePage(Through::GdiPlus, 12, 12);
  EXPECT_TRUE(page->setFillColor(kBlack) && page->fillRect(0, 0, 12, 12));
  EXPECT_EQ(countPainted(*page), 144);
}

}  // namespace
}  // namespace corvix
