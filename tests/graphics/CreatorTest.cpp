// Which kind of context answers which request, what a memory context is made of, and that nothing is left behind.
#include "graphics/contexts/MemoryContexts.h"
#include "tests/graphics/GraphicsTesting.h"
#include "tests/graphics/SystemObjects.h"

namespace corvix::testing {
namespace {

enum class Kind { None, PlainMemory, PlainScreen, PlusMemory, PlusScreen };

Kind kindOf(IAGDC* context) {
  if (!context) return Kind::None;
  if (query<AGDCPlainMemory>(context)) return Kind::PlainMemory;
  if (query<AGDCMemory>(context)) return Kind::PlusMemory;
  return query<AGDC>(context) ? Kind::PlusScreen : Kind::PlainScreen;
}

struct Row {
  bool isMemory;
  u32 required;
  u32 optional;
  Kind kind;
};
const Row kRows[] = {
    {true, 0, 0, Kind::PlainMemory},
    {false, 0, 0, Kind::PlainScreen},
    {true, 0x13FF, 0x13FF, Kind::PlainMemory},
    {true, 0x2000, 0, Kind::PlusMemory},
    {false, 0x2000, 0, Kind::PlusScreen},
    {false, 0, 0x2000, Kind::PlusScreen},
    {true, 0x1, 0x2000, Kind::PlusMemory},
    {true, 0, 0x4000, Kind::PlainMemory},           // what cannot be had is dropped
    {true, 0, 0x2000 | 0x4000, Kind::PlainMemory},  // all of it
    {false, 0x2000, 0x400, Kind::PlusScreen},
    {false, 0x4000, 0, Kind::None},
    {true, 0x400, 0x2000, Kind::None},
    {true, 0xE0000000, 0xE0000000, Kind::PlainMemory},  // the creator sets the target itself
    {false, 0xE0000000, 0xE0000000, Kind::PlainScreen},
};

TEST(Creators, ChooseTheKindByMasks) {
  const gdi::ScreenDevice screen(GetDC(nullptr));
  const auto memory = make<QuillMemoryDCCreator>();
  const auto onScreen = make<QuillScreenDCCreator>();
  for (const Row& row : kRows) {
    const auto context =
        Ref<IAGDC>::adopt(row.isMemory ? memory->create(row.required, row.optional, nullptr, 4, 4)
                                       : onScreen->create(row.required, row.optional, screen.get(), 4, 4));
    EXPECT_EQ(kindOf(context.get()), row.kind) << row.isMemory << ' ' << row.required << ' ' << row.optional;
    if (!context) continue;
    EXPECT_TRUE(context->canDraw());
    EXPECT_EQ(row.isMemory, context->bitmap() != nullptr);
    EXPECT_EQ(row.required & ~capability::kTargets & ~context->capabilities(), 0u);
  }
}

struct SizeRow {
  double width;
  double height;
  LONG bitmapWidth;  // 0: no context
  LONG bitmapHeight;
};
const SizeRow kSizes[] = {
    {0.5, 2.2, 1, 3}, {7, 5, 7, 5},         {0, 5, 0, 0},    {-0.5, 5, 0, 0},         {5, 0, 0, 0},
    {1e9, 1e9, 0, 0}, {70000, 70000, 0, 0}, {1e30, 5, 0, 0}, {std::nan(""), 5, 0, 0}, {5, HUGE_VAL, 0, 0},
};

TEST(Creators, MakeBitmapsOfWholePixelsOrNothing) {
  for (const Through through : kBoth) {
    for (const SizeRow& row : kSizes) {
      const Ref<IAGDC> page = makePage(through, row.width, row.height);
      ASSERT_EQ(static_cast<bool>(page), row.bitmapWidth > 0) << nameOf(through) << row.width << ' ' << row.height;
      if (!page) continue;
      BITMAP bitmap = {};
      GetObjectW(page->bitmap(), sizeof bitmap, &bitmap);
      EXPECT_EQ(bitmap.bmWidth, row.bitmapWidth);
      EXPECT_EQ(bitmap.bmHeight, row.bitmapHeight);
      EXPECT_EQ(bitmap.bmBitsPixel, 24);
      const auto* const bytes = static_cast<const u8*>(bitmap.bmBits);
      for (LONG y = 0; y < bitmap.bmHeight; ++y) {
        for (LONG x = 0; x < 3 * bitmap.bmWidth; ++x) EXPECT_EQ(bytes[y * bitmap.bmWidthBytes + x], 255);
      }
    }
  }
}

TEST(Creators, MemoryContextOnAGivenDeviceDrawsThere) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> target = makePage(through, 8, 8);
    const auto creator = make<QuillMemoryDCCreator>();
    const auto context = Ref<IAGDC>::adopt(
        creator->create(through == Through::GdiPlus ? capability::kGdiPlus : 0, 0, target->deviceContext(), 8, 8));
    ASSERT_TRUE(context);
    EXPECT_EQ(context->bitmap(), nullptr);
    EXPECT_TRUE(context->setFillColor(kBlack) && context->fillRect(2, 2, 3, 3));
    context->detach();
    EXPECT_EQ(pixelOf(*target, 3, 3), kBlack);
  }
}

TEST(Creators, KnowWhatTheyMadeAsLongAsItLives) {
  auto creator = make<QuillMemoryDCCreator>();
  auto first = Ref<IAGDC>::adopt(creator->create(0, 0, nullptr, 2, 2));
  auto second = Ref<IAGDC>::adopt(creator->create(0x2000, 0, nullptr, 2, 2));
  EXPECT_EQ(creator->livingCount(), 2u);
  first.reset();
  EXPECT_EQ(creator->livingCount(), 1u);
  creator.reset();  // before what it made
  EXPECT_TRUE(second->clear());
}

TEST(Creators, DetachGivesTheDeviceBackAsItWas) {
  const Ref<IAGDC> owner = makePage(Through::Gdi, 32, 32);
  const HDC device = owner->deviceContext();
  SetViewportOrgEx(device, 3, 4, nullptr);
  const gdi::Region before(CreateRectRgn(1, 1, 30, 30));
  SelectClipRgn(device, before.get());
  const HGDIOBJ pen = GetCurrentObject(device, OBJ_PEN);
  const HGDIOBJ brush = GetCurrentObject(device, OBJ_BRUSH);
  for (const u32 wanted : {0u, capability::kGdiPlus}) {
    const auto creator = make<QuillScreenDCCreator>();
    const auto context = Ref<IAGDC>::adopt(creator->create(wanted, 0, device, 32, 32));
    EXPECT_TRUE(context->setOrigin(5, 5) && context->clipRect(0, 0, 4, 4) && context->setFillColor(kBlack) &&
                context->fillRect(0, 0, 9, 9) && context->line(0, 0, 9, 9) && context->xorRect({0, 0, 3, 3}));
    EXPECT_TRUE(context->detach());
    EXPECT_FALSE(context->fillRect(0, 0, 9, 9));
    EXPECT_FALSE(context->detach());
    POINT origin;
    GetViewportOrgEx(device, &origin);
    EXPECT_EQ(origin.x, 3);
    EXPECT_EQ(origin.y, 4);
    const gdi::Region after(CreateRectRgn(0, 0, 0, 0));
    EXPECT_EQ(GetClipRgn(device, after.get()), 1);
    EXPECT_TRUE(EqualRgn(before.get(), after.get()));
    EXPECT_EQ(GetCurrentObject(device, OBJ_PEN), pen);
    EXPECT_EQ(GetCurrentObject(device, OBJ_BRUSH), brush);
  }
}

void useAll(Through through) {
  const Ref<IAGDC> page = makePage(through, 16, 16);
  const double dashes[] = {3, 2};
  page->setOrigin(1, 1);
  page->saveClip();
  page->clipRect(1, 1, 12, 12);
  page->setLineWidth(3);
  page->setDash(dashes, 2, 1);
  page->line(0, 0, 15, 15);
  page->beginPath();
  page->rectangle(2, 2, 9, 9);
  page->drawPath(PathPaint::FillAndStroke);
  page->clipPath();
  page->saveClip();
  page->clipStroke();
  page->restoreClip();
  page->xorRect({2, 2, 8, 8});
  Color color;
  page->getPixel(3, 3, &color);
  const auto image = Ref<IAGImage>::adopt(page->createImage(3, 3, ColorModel::Cmyk, 0));
  page->drawImage(image.get(), 1, 1, 7, 5);
  page->drawImageOffscreen(image.get(), 1, 1, 3, 3);
  page->acquireDevice(nullptr);  // and not given back
  const auto other = Ref<IAGDC>::adopt(page->createDetached());
  other->attach(page->deviceContext(), 9, 9);
  other->fillRect(1, 1, 3, 3);
}

TEST(Creators, TenThousandContextsLeaveNothing) {
  for (const Through through : kBoth) {
    useAll(through);  // what is made once stays
    const int freeBefore = freeGdiObjects();
    const std::size_t blocksBefore = heapBlocks();
    for (int i = 0; i < 10000; ++i) {
      if (i % 100 == 0) {
        useAll(through);
      } else {
        ASSERT_TRUE(makePage(through, 4, 4));
      }
    }
    EXPECT_EQ(freeGdiObjects(), freeBefore) << nameOf(through);
    EXPECT_EQ(heapBlocks(), blocksBefore) << nameOf(through);
  }
}

TEST(Creators, ContextsSurviveRunningOutOfObjects) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 16, 16);
    {
      const GdiExhaustion exhaustion;
      EXPECT_FALSE(makePage(through, 4, 4)) << nameOf(through);
      page->setLineWidth(5);
      page->setStrokeColor(rgb(1, 2, 3));
      page->line(0, 0, 9, 9);
      page->saveClip();
      page->clipRect(1, 1, 5, 5);
      page->xorRect({1, 1, 5, 5});
      page->restoreClip();
    }
    EXPECT_TRUE(page->resetClip() && page->setFillColor(kBlack) && page->fillRect(0, 0, 16, 16)) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 8, 8), kBlack) << nameOf(through);
    EXPECT_TRUE(makePage(through, 4, 4)) << nameOf(through);
  }
}

TEST(Creators, DeviceThatDiesUnderItsContext) {
  for (const u32 wanted : {0u, capability::kGdiPlus}) {
    gdi::MemoryDevice device(CreateCompatibleDC(nullptr));
    const auto creator = make<QuillScreenDCCreator>();
    const auto context = Ref<IAGDC>::adopt(creator->create(wanted, 0, device.get(), 8, 8));
    context->line(0, 0, 5, 5);
    device.reset();
    Color color;
    EXPECT_FALSE(context->getPixel(1, 1, &color));
    EXPECT_FALSE(context->setPixel(1, 1, kBlack));
    EXPECT_FALSE(context->xorRect({1, 1, 4, 4}));
    context->line(0, 0, 5, 5);
    context->fillRect(0, 0, 5, 5);
    context->clipRect(0, 0, 3, 3);
    context->clear();
  }
}

}  // namespace
}  // namespace corvix::testing
