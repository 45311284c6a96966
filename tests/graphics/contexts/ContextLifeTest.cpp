// Contexts from attach to detach: what they give back, and that nothing is left behind.
#include "graphics/gdi/Gdi_p.h"
#include "tests/graphics/GdiObjects.h"
#include "tests/graphics/Pages.h"
#include "tests/support/HeapBlocks.h"

namespace corvix {
namespace {

using namespace testing_support;

TEST(Contexts, DetachGivesTheDeviceBackAsItWas) {
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

TEST(Contexts, DetachDeletesTheirOwnObjects) {
  const Ref<IAGDC> target = makePage(Through::Gdi, 32, 32);
  for (const u32 wanted : {0u, capability::kGdiPlus}) {
    const auto context = Ref<IAGDC>::adopt(make<QuillScreenDCCreator>()->create(wanted, 0, nullptr, 0, 0));
    const int freeBefore = freeGdiObjects();
    ASSERT_TRUE(context->attach(target->deviceContext(), 32, 32));
    context->setLineWidth(3);
    context->line(0, 0, 9, 9);
    context->fillRect(0, 0, 9.5, 9);
    context->clipRect(1, 1, 20, 20);
    context->saveClip();
    context->excludeRect(2, 2, 3, 3);
    context->setPixel(1, 1, kBlack);
    EXPECT_TRUE(context->detach());
    EXPECT_EQ(freeGdiObjects(), freeBefore) << wanted;
  }
}

TEST(Contexts, TheCallersOwnDrawingHasTheirClipAndOrigin) {
  for (const Through through : kBoth) {
    SCOPED_TRACE(nameOf(through));
    const Ref<IAGDC> page = makePage(through);
    page->setOrigin(4.6, 3);
    page->clipRect(2, 2, 10, 10);
    PatBlt(page->deviceContext(), 0, 0, 64, 48, BLACKNESS);
    const auto box = [](const Box& inked) {
      return inside([inked](double x, double y) { return boxDistance(x, y, inked); }, 0);
    };
    expectCoverage(*page, kBlack, box({7, 5, 17, 15}), "clipped");
    page->setOrigin(4.6, 3);
    PatBlt(page->deviceContext(), 3, 3, 2, 2, WHITENESS);
    EXPECT_TRUE(page->setFillColor(kBlack) && page->fillRect(3, 3, 2, 2));
    expectCoverage(*page, kBlack, box({7, 5, 17, 15}), "drawn right behind it");
    EXPECT_TRUE(page->resetClip() && page->setFillColor(kBlack) && page->setOrigin(0, 0));
    EXPECT_TRUE(page->fillRect(0, 0, 64, 48));
    expectCoverage(*page, kBlack, box({0, 0, 64, 48}), "as if nothing had been lent");
  }
}

TEST(Contexts, LendMemoryDevicesUntilTheyAreGivenBack) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 8, 8);
    const gdi::PixelBitmap pixels = gdi::createPixels(4, 4, 24);
    const HDC device = page->acquireDevice(pixels.bitmap.get());
    ASSERT_TRUE(device) << nameOf(through);
    EXPECT_EQ(GetCurrentObject(device, OBJ_BITMAP), pixels.bitmap.get());
    SetPixelV(device, 1, 1, RGB(1, 2, 3));
    GdiFlush();
    EXPECT_EQ(pixels.pixels[pixels.strideBytes + 3], 3);
    EXPECT_FALSE(page->acquireDevice(pixels.bitmap.get()));  // a bitmap is in one device context at a time
    EXPECT_TRUE(page->returnDevice(device));
    EXPECT_FALSE(page->returnDevice(device));
    EXPECT_FALSE(page->returnDevice(nullptr));
    const HDC again = page->acquireDevice(pixels.bitmap.get());
    EXPECT_TRUE(again && page->returnDevice(again));
  }
}

TEST(Contexts, NearestColorAndPixelsAsTheDeviceHasThem) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 8, 8);
    Color color = 0;
    EXPECT_EQ(page->nearestColor(rgb(1, 2, 3)), rgb(1, 2, 3)) << nameOf(through);
    EXPECT_TRUE(page->setPixelAt(2.6, 3.2, rgb(9, 8, 7)) && page->readPixel(3.4, 2.6, &color));
    EXPECT_EQ(color, rgb(9, 8, 7)) << nameOf(through);
    EXPECT_FALSE(page->readPixel(8, 3, &color) || page->readPixel(std::nan(""), 3, &color) ||
                 page->readPixel(3, 3, nullptr));
    if (page->setTransform({2, 0, 0, 1, -1, 0})) {
      EXPECT_TRUE(page->readPixel(2, 3, &color) && color == rgb(9, 8, 7));
    }
    EXPECT_TRUE(page->detach());
    EXPECT_FALSE(page->readPixel(3, 3, &color));
    EXPECT_EQ(page->nearestColor(rgb(4, 5, 6)), rgb(4, 5, 6));
  }
  // A device of two colours.
  const gdi::MemoryDevice device(CreateCompatibleDC(nullptr));
  const gdi::Bitmap bitmap(CreateBitmap(8, 8, 1, 1, nullptr));
  const gdi::Selected selected = gdi::select(device.get(), bitmap.get());
  const auto context = Ref<IAGDC>::adopt(make<QuillScreenDCCreator>()->create(0, 0, device.get(), 8, 8));
  EXPECT_EQ(context->nearestColor(rgb(250, 250, 240)), kWhite);
}

TEST(Contexts, WhatIsNoDeviceOrNoSizeIsNotAttached) {
  const gdi::Bitmap bitmap(CreateBitmap(8, 8, 1, 1, nullptr));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 8, 8);
    HDC const device = page->deviceContext();
    const struct {
      HDC device;
      double width, height;
    } rows[] = {{nullptr, 9, 9},
                {reinterpret_cast<HDC>(bitmap.get()), 9, 9},
                {reinterpret_cast<HDC>(0x1234), 9, 9},
                {device, -1, 9},
                {device, 9, -0.5},
                {device, nan, 9}};
    for (const auto& row : rows) EXPECT_FALSE(page->attach(row.device, row.width, row.height)) << &row - rows;
    EXPECT_TRUE(page->canDraw() && page->deviceContext() == device && page->width() == 8) << "as before";
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

TEST(Contexts, TenThousandContextsLeaveNothing) {
  for (const Through through : kBoth) {
    useAll(through);  // what is made once stays
    const int freeBefore = freeGdiObjects();
    const std::size_t blocksBefore = heapBlocksInUse();
    for (int i = 0; i < 10000; ++i) {
      if (i % 100 == 0) {
        useAll(through);
      } else {
        ASSERT_TRUE(makePage(through, 4, 4));
      }
    }
    EXPECT_EQ(freeGdiObjects(), freeBefore) << nameOf(through);
    EXPECT_EQ(heapBlocksInUse(), blocksBefore) << nameOf(through);
  }
}

TEST(Contexts, ContextsSurviveRunningOutOfObjects) {
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

TEST(Contexts, DeviceThatDiesUnderItsContext) {
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
}  // namespace corvix
