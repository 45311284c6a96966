// Which kind of context answers which request, and what a memory context is made of.
#include "graphics/contexts/MemoryContexts_p.h"
#include "tests/graphics/Pages.h"

#include <atomic>
#include <thread>

namespace corvix {
namespace {

using namespace testing_support;

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
    {-3.5, 5, 3, 5},  {5, -3.5, 5, 3},      {-4, -4, 4, 4},  // as large, but none of it is drawn on
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
      if (row.width < 0 || row.height < 0) {
        Color color;
        EXPECT_TRUE(page->canDraw() && page->width() == row.width && page->height() == row.height);
        EXPECT_FALSE(page->getPixel(0, 0, &color) || page->setPixel(0, 0, kBlack));
        continue;
      }
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

// Contexts belong to a thread, creators to all.
TEST(Creators, MakeContextsForSeveralThreadsAtOnce) {
  constexpr std::size_t kEach = 64;
  constexpr int kRounds = 300;
  auto creator = make<QuillScreenDCCreator>();
  std::atomic<int> begun{0};
  std::atomic<int> ended{0};
  const auto makeSome = [&](std::vector<Ref<IAGDC>>& held, int round) {
    ++begun;
    while (begun < 2 * round) std::this_thread::yield();
    for (std::size_t i = 0; i < kEach; ++i) {
      held.push_back(Ref<IAGDC>::adopt(creator->create(0, 0, nullptr, 2, 2)));
    }
    ++ended;
    while (ended < 2 * round) std::this_thread::yield();
  };
  const auto run = [&](bool isFirst) {
    std::vector<Ref<IAGDC>> held;
    for (int round = 1; round <= kRounds; ++round) {
      makeSome(held, 2 * round - 1);
      if (isFirst) {
        EXPECT_EQ(creator->livingCount(), 2 * kEach);
      }
      // Every other time the creator goes first, while the contexts go.
      makeSome(held, 2 * round);
      if (isFirst && round % 2) creator = make<QuillScreenDCCreator>();
      held.clear();
    }
  };
  std::thread other(run, false);
  run(true);
  other.join();
  EXPECT_EQ(creator->livingCount(), 0u);
}

}  // namespace
}  // namespace corvix
