// Text on both contexts: where it comes out, and what it leaves alone.
#include "graphics/fonts/FMFontMachine_p.h"
#include "graphics/fonts/FontSettings_p.h"
#include "graphics/fonts/FontSource.h"
#include "graphics/fonts/GlyphCache_p.h"
#include "graphics/text/Text.h"
#include "tests/graphics/GdiObjects.h"
#include "tests/graphics/Pages.h"
#include "tests/support/Soak.h"

#include <cstring>
#include <limits>
#include <thread>

namespace corvix {
namespace {

using namespace testing_support;

Ref<IFMFont> fontFor(const wchar_t* family, i32 weight = 0) {
  FontRequest request;
  request.family = family;
  request.weight = weight;
  return Ref<IFMFont>::adopt(FMFontMachine::shared()->createFontFor(request));
}

// Around everything that is not white; empty: left is not below right.
PixelBox inkOf(IAGDC& page) {
  PixelBox box = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
  for (i32 y = 0; y < page.height(); ++y) {
    for (i32 x = 0; x < page.width(); ++x) {
      if (pixelOf(page, x, y) == kWhite) continue;
      box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1), std::max(box.bottom, y + 1)};
    }
  }
  return box;
}

bool draw(IAGDC& page, IFMFont& font, double size, const Matrix& at, const std::wstring& text, Point* end = nullptr) {
  return drawText(page, font, size, at, text.c_str(), static_cast<i32>(text.size()), end);
}

struct PlaceRow {
  const char* why;
  const wchar_t* text;
  double size;
  Matrix matrix;
  PixelBox least;  // the ink reaches at least so far
  PixelBox most;   // and no farther
};

TEST(Text, ComesOutWhereItBelongs) {
  const double right = std::acos(-1.0) / 2;
  const PlaceRow rows[] = {
      {"upright, pixel by pixel", L"HHH", 20, Matrix::translation(10, 40), {14, 27, 40, 40}, {9, 23, 62, 41}},
      {"large, as outlines", L"H", 120, Matrix::translation(10, 110), {25, 30, 85, 110}, {9, 15, 110, 111}},
      {"doubled by the matrix", L"HHH", 10, Matrix{2, 0, 0, 2, 10, 40}, {14, 27, 40, 40}, {9, 23, 62, 41}},
      {"a quarter turn",
       L"HHH",
       20,
       Matrix::rotation(right).then(Matrix::translation(20, 10)),
       {21, 14, 33, 40},
       {19, 9, 37, 62}},
      {"upside down", L"H", 20, Matrix{1, 0, 0, -1, 10, 40}, {13, 41, 20, 53}, {9, 39, 30, 58}},
      {"below the baseline", L"g", 20, Matrix::translation(10, 40), {12, 30, 18, 43}, {9, 25, 26, 47}},
      {"partly outside", L"HHHHHHHHHHHHHHHHHHHH", 20, Matrix::translation(-30, 40), {3, 27, 110, 40}, {0, 23, 120, 41}},
      {"nothing", L"", 20, Matrix::translation(10, 40), {0, 0, 0, 0}, {0, 0, 0, 0}},
      {"blanks only", L"   ", 20, Matrix::translation(10, 40), {0, 0, 0, 0}, {0, 0, 0, 0}},
  };
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  for (const Through through : kBoth) {
    for (const PlaceRow& row : rows) {
      SCOPED_TRACE(nameOf(through) + ": " + row.why);
      const Ref<IAGDC> page = makePage(through, 120, 120);
      page->setFillColor(kBlack);
      EXPECT_TRUE(draw(*page, *font, row.size, row.matrix, row.text));
      const PixelBox ink = inkOf(*page);
      if (row.most.right == 0) {
        EXPECT_GT(ink.left, ink.right);
        continue;
      }
      EXPECT_TRUE(ink.left <= row.least.left && ink.top <= row.least.top && ink.right >= row.least.right &&
                  ink.bottom >= row.least.bottom && ink.left >= row.most.left && ink.top >= row.most.top &&
                  ink.right <= row.most.right && ink.bottom <= row.most.bottom)
          << ink.left << ' ' << ink.top << ' ' << ink.right << ' ' << ink.bottom;
    }
  }
}

TEST(Text, FollowsColourClipOriginAndTransform) {
  const Ref<IFMFont> font = fontFor(L"Helvetica", 700);
  for (const Through through : kBoth) {
    SCOPED_TRACE(nameOf(through));
    const Ref<IAGDC> plain = makePage(through);
    plain->setFillColor(rgb(200, 0, 0));
    Point end = {0, 0};
    ASSERT_TRUE(draw(*plain, *font, 24, Matrix::translation(4, 30), L"HH", &end));
    const PixelBox ink = inkOf(*plain);
    EXPECT_NEAR(end.x, textWidth(*font, 24, L"HH", 2), 1e-9);
    EXPECT_EQ(pixelOf(*plain, ink.left + 2, ink.top + 6), rgb(200, 0, 0));

    const Ref<IAGDC> moved = makePage(through);
    moved->setFillColor(kBlack);
    moved->setOrigin(5, 7);
    ASSERT_TRUE(draw(*moved, *font, 24, Matrix::translation(4, 30), L"HH"));
    moved->setOrigin(0, 0);
    EXPECT_EQ(inkOf(*moved).left, ink.left + 5);
    EXPECT_EQ(inkOf(*moved).top, ink.top + 7);

    const Ref<IAGDC> clipped = makePage(through);
    clipped->setFillColor(kBlack);
    clipped->clipRect(0, 0, 12, 48);
    ASSERT_TRUE(draw(*clipped, *font, 24, Matrix::translation(4, 30), L"HH"));
    EXPECT_EQ(inkOf(*clipped).right, 12);

    // By half, or opaque where every colour is: as masks and as outlines, into a bitmap and through the system.
    for (const Matrix& matrix : {Matrix::translation(4, 30), Matrix{1, 0, 0.01, 1, 4, 30}}) {
      for (const double origin : {0.0, 0.5}) {
        const Ref<IAGDC> faint = makePage(through);
        faint->setFillColor(argb(128, 0, 0, 0));
        faint->setOrigin(origin, 0);
        ASSERT_TRUE(draw(*faint, *font, 24, matrix, L"HH"));
        EXPECT_EQ(redOf(pixelOf(*faint, ink.left + 2, ink.top + 6)), through == Through::Gdi ? 0u : 127u) << matrix.c;
      }
    }

    const Ref<IAGDC> shown = makePage(through);
    if (shown->setTransform({2, 0, 0, 2, 0, 0})) {
      shown->setFillColor(kBlack);
      ASSERT_TRUE(draw(*shown, *font, 12, Matrix::translation(2, 15), L"HH"));
      EXPECT_EQ(inkOf(*shown).left, ink.left);
      EXPECT_EQ(inkOf(*shown).bottom, ink.bottom);
    }
  }
}

TEST(Text, LeavesThePathAndTheFillRuleAlone) {
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  for (const Through through : kBoth) {
    SCOPED_TRACE(nameOf(through));
    const Ref<IAGDC> page = makePage(through);
    page->setFillColor(kBlack);
    page->beginPath();
    page->rectangle(0, 0, 30, 30);
    page->rectangle(10, 10, 10, 10);
    EXPECT_TRUE(draw(*page, *font, 20, Matrix{1, 0.5, 0, 1, -500, -500}, L"o"));
    EXPECT_TRUE(page->drawPath(PathPaint::Fill));
    EXPECT_EQ(pixelOf(*page, 5, 5), kBlack);
    EXPECT_EQ(pixelOf(*page, 15, 15), kWhite);  // even-odd still
  }
}

TEST(Text, NarrowsTheClipToItsOutlines) {
  const Ref<IFMFont> font = fontFor(L"Helvetica", 700);
  for (const Through through : kBoth) {
    SCOPED_TRACE(nameOf(through));
    const Ref<IAGDC> drawn = makePage(through);
    const Ref<IAGDC> filled = makePage(through);
    drawn->setFillColor(kBlack);
    filled->setFillColor(kBlack);
    ASSERT_TRUE(draw(*drawn, *font, 40, Matrix::translation(4, 40), L"H"));
    ASSERT_TRUE(clipText(*filled, *font, 40, Matrix::translation(4, 40), L"H", 1));
    ASSERT_TRUE(filled->fillRect(0, 0, 64, 48));
    const PixelBox one = inkOf(*drawn);
    const PixelBox other = inkOf(*filled);
    EXPECT_NEAR(one.left, other.left, 1);
    EXPECT_NEAR(one.right, other.right, 1);
    EXPECT_EQ(pixelOf(*filled, (other.left + other.right) / 2, other.top + 2), kWhite);  // between the stems
  }
}

struct CharacterRow {
  const char* why;
  std::wstring text;
  int glyphs;  // that advance
};

TEST(Text, KnowsEveryCharacter) {
  const CharacterRow rows[] = {
      {"two letters", L"AB", 2},
      {"a control character is left out", L"A\nB\x7f", 2},
      {"beyond the basic plane", L"\xD835\xDC00", 1},
      {"half a pair is one replacement", L"\xD835", 1},
      {"the other half", L"A\xDC00", 2},
      {"in no font: a box", L"\xE123", 1},
  };
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  for (const CharacterRow& row : rows) {
    SCOPED_TRACE(row.why);
    const Ref<IAGDC> page = makePage(Through::Gdi);
    page->setFillColor(kBlack);
    Point end = {0, 0};
    EXPECT_TRUE(draw(*page, *font, 16, Matrix::translation(2, 30), row.text, &end));
    EXPECT_GT(end.x, row.glyphs * 2.0);
    EXPECT_LT(end.x, row.glyphs * 24.0);
    EXPECT_GT(countPainted(*page), 5);
  }
}

struct SameRow {
  const char* why;
  std::wstring text;
  std::wstring same;  // looks like that
};

TEST(Text, MarksStandOnTheCharacterBefore) {
  const SameRow rows[] = {
      {"one character for both", L"e\x0301z", L"\x00E9z"},
      {"two marks, one after the other", L"a\x0302\x0301z", L"\x1EA5z"},
      {"characters that only steer others",
       L"a\x200D"
       L"b\xFE0F\x00AD\x2066"
       L"c",
       L"abc"},
      {"of other planes too", L"a\xDB40\xDD00z", L"az"},
  };
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  for (const SameRow& row : rows) {
    SCOPED_TRACE(row.why);
    const Ref<IAGDC> pages[] = {makePage(Through::Gdi), makePage(Through::Gdi)};
    for (const Ref<IAGDC>& page : pages) {
      page->setFillColor(kBlack);
      EXPECT_TRUE(draw(*page, *font, 20, Matrix::translation(4, 30), page == pages[0] ? row.text : row.same));
    }
    int different = 0;
    for (i32 i = 0; i < 64 * 48; ++i)
      different += pixelOf(*pages[0], i % 64, i / 64) != pixelOf(*pages[1], i % 64, i / 64);
    EXPECT_EQ(different, 0);
    EXPECT_GT(countPainted(*pages[0]), 20);
  }
  for (const wchar_t* family : {L"Helvetica", L"Courier"}) {
    const Ref<IFMFont> other = fontFor(family);
    EXPECT_NEAR(textWidth(*other, 20, L"x\x0323z", 3), textWidth(*other, 20, L"xz", 2), 1e-9) << family;
    const Ref<IAGDC> page = makePage(Through::Gdi);
    page->setFillColor(kBlack);
    EXPECT_TRUE(draw(*page, *other, 24, Matrix::translation(20, 30), L"x"));
    const PixelBox alone = inkOf(*page);
    EXPECT_TRUE(draw(*page, *other, 24, Matrix::translation(20, 30), L"x\x0323"));
    const PixelBox marked = inkOf(*page);
    EXPECT_TRUE(marked.bottom > alone.bottom && marked.left >= alone.left - 1 && marked.right <= alone.right + 1)
        << family;
  }
}

// Whose outlines cannot be read from the second on.
class BrokenFont final : public IFMFont, public IFMFontSource {
  CORVIX_IDENTITY(BrokenFont, 0x4D20B91E, 0x41C7A5F3, 0x9B3E60D8, 0x72FA1C45, IFMFont, IFMFontSource)

 public:
  const wchar_t* family() const noexcept override { return L""; }
  bool isSubstitute() const noexcept override { return false; }
  FontMetrics metrics() override { return {}; }
  u32 glyphOf(u32 codePoint) override { return codePoint < 0x80 || codePoint == 0xE124 ? codePoint : 0; }
  double advance(u32) override { return 1; }
  bool outline(u32 glyph, IGlyphSink& sink) override {
    sink.moveTo({0, 0});
    sink.lineTo({1, 0});
    sink.lineTo({1, -1});
    return glyph == 'A';
  }
  bool coverage(u32, double, i32, GlyphCoverage&) override { return false; }
};

// Has U+E124, which no other font has.
class RareFinder final : public BSmartObject, public IFMFontCreator, public IFMFontFinder {
  CORVIX_IDENTITY(RareFinder, 0x7B15C0E4, 0x4F83D29A, 0xA6027BE1, 0x51D8F93C, BSmartObject, IFMFontCreator,
                  IFMFontFinder)

 public:
  IFMFont* createFont(const wchar_t*) override { return nullptr; }
  IFMFont* createFontFor(const FontRequest&) override { return nullptr; }
  IFMFont* fontWithGlyph(u32 codePoint, IFMFont*) override {
    return codePoint == 0xE124 ? make<BrokenFont>().detach() : nullptr;
  }
};

// A box with a code is for what no font has; characters that come after one are still looked for.
TEST(Text, AsksForOtherFontsAfterABox) {
  const Ref<FMFontMachine> machine = FMFontMachine::shared();
  const auto finder = make<RareFinder>();
  machine->addCreator(finder.get());
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  const double box = textWidth(*font, 100, L"\xE123", 1);
  EXPECT_NE(box, 100);
  EXPECT_EQ(textWidth(*font, 100, L"\xE124", 1), 100);
  EXPECT_EQ(textWidth(*font, 100, L"\xE125", 1), box);
  EXPECT_TRUE(machine->removeCreator(finder.get()));
}

TEST(Text, AClipThatFailsLeavesNothing) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    const auto font = make<BrokenFont>();
    EXPECT_FALSE(clipText(*page, *font, 20, Matrix::translation(2, 40), L"AB", 2)) << nameOf(through);
    page->setFillColor(kBlack);
    EXPECT_TRUE(draw(*page, *font, 20, Matrix{1, 0.5, 0, 1, 1000, 1000}, L"A"));
    EXPECT_EQ(countPainted(*page), 0) << nameOf(through);
    EXPECT_TRUE(page->fillRect(0, 0, 64, 48));
    EXPECT_EQ(countPainted(*page), 64 * 48) << nameOf(through);
    EXPECT_EQ(page->savedClipCount(), 0);
  }
}

// Squares, but for B, which is as the row says, N, which ends nowhere, and T, whose glyph number throws.
class OddFont final : public IFMFont, public IFMFontSource {
  CORVIX_IDENTITY(OddFont, 0x6E913C07, 0x4A58D2F1, 0x8B27E05C, 0xC9413DA6, IFMFont, IFMFontSource)

 public:
  explicit OddFont(const PixelBox& mask) : mask_(mask) {}
  const wchar_t* family() const noexcept override { return L""; }
  bool isSubstitute() const noexcept override { return false; }
  FontMetrics metrics() override { return {}; }
  u32 glyphOf(u32 codePoint) override { return codePoint == 'T' ? throw 1 : codePoint; }
  double advance(u32 glyph) override { return glyph == 'N' ? std::numeric_limits<double>::infinity() : 0.5; }
  bool outline(u32 glyph, IGlyphSink& sink) override {
    sink.moveTo({0, 0});
    sink.lineTo({0.5, 0});
    sink.lineTo({0.5, -0.5});
    sink.lineTo({0, -0.5});
    return glyph == 'B' && mask_.right == 0 ? throw 1 : glyph != 'B';
  }
  bool coverage(u32 glyph, double sizePx, i32, GlyphCoverage& made) override {
    const i32 size = static_cast<i32>(sizePx / 2);
    const bool isOdd = glyph == 'B';
    made.left = isOdd ? mask_.left : 0;
    made.top = isOdd ? mask_.top : -size;
    made.width = isOdd ? mask_.right : size;
    made.height = isOdd ? mask_.bottom : size;
    if (!isOdd || made.left) made.rows.allocate(4096);
    if (made.rows) std::memset(made.rows.get(), 255, 4096);
    return !isOdd || made.width;
  }

 private:
  PixelBox mask_;  // of B: left, top, width, height
};

TEST(Text, LeavesOutWhatAFontDoesNotGive) {
  const PixelBox rows[] = {{0, 0, 1, 0x7FFFFFFF}, {0, 0, 9, 9},         {1, 0, -9, 9},       {1, 0, 9, -9},
                           {INT32_MAX, 0, 9, 9},  {INT32_MIN, 0, 9, 9}, {1, INT32_MIN, 9, 9}};
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 120, 48);
    page->setFillColor(kBlack);
    for (const PixelBox& row : rows) {
      const auto font = make<OddFont>(row);
      for (const Matrix& matrix : {Matrix::translation(0, 40), Matrix{0.5, 0, 0, -0.5, 0, 40}}) {  // masks, outlines
        SCOPED_TRACE(nameOf(through) + ' ' + std::to_string(row.left) + ' ' + std::to_string(row.right));
        page->clear();
        EXPECT_FALSE(draw(*page, *font, 60, matrix, L"ABA"));
        const i32 square = static_cast<i32>(30 * matrix.a);
        EXPECT_EQ(countPainted(*page), matrix.a == 1 ? 2 * 30 * 30 : 2 * 15 * 8);
        EXPECT_EQ(inkOf(*page).right, 3 * square);
      }
    }
    const auto font = make<OddFont>(PixelBox{});
    page->clear();
    for (const wchar_t* text : {L"AT", L"AN"}) {
      EXPECT_FALSE(draw(*page, *font, 60, Matrix::translation(0, 40), text));
      EXPECT_EQ(textWidth(*font, 60, text, 2), 0);
    }
    EXPECT_FALSE(clipText(*page, *font, 60, Matrix::translation(0, 40), L"AB", 2));
    EXPECT_FALSE(draw(*page, *font, 60, Matrix{1, 0, 0, -1, 0, 40}, L"AB"));
    EXPECT_EQ(countPainted(*page), 0) << nameOf(through);
    EXPECT_TRUE(draw(*page, *font, 60, Matrix{1, 0, 0, -1, 500, 40}, L"A"));  // nor is anything left to come out now
    EXPECT_EQ(countPainted(*page), 0) << nameOf(through);
  }
}

TEST(Text, RefusesWhatCannotBeDrawn) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  const Ref<IAGDC> page = makePage(Through::Gdi);
  const Ref<IAGDC> detached = Ref<IAGDC>::adopt(page->createDetached());
  const Matrix at = Matrix::translation(4, 30);
  Point end = {77, 77};
  EXPECT_FALSE(draw(*detached, *font, 20, at, L"H", &end));
  for (const double size : {0.0, -3.0, nan, std::numeric_limits<double>::infinity()}) {
    EXPECT_FALSE(draw(*page, *font, size, at, L"H", &end)) << size;
  }
  EXPECT_FALSE(draw(*page, *font, 20, Matrix::translation(nan, 0), L"H", &end));
  EXPECT_FALSE(drawText(*page, *font, 20, at, nullptr, 3, &end));
  EXPECT_FALSE(drawText(*page, *font, 20, at, L"H", -1, &end));
  EXPECT_EQ(textWidth(*font, 20, L"H", -1), 0);
  EXPECT_EQ(textWidth(*font, nan, L"H", 1), 0);
  EXPECT_EQ(textWidth(*font, 1.7e308, L"HH", 2), 0);
  const GlyphPlace lost = {1, nan, 0};
  EXPECT_FALSE(drawGlyphs(*page, *font, 20, at, &lost, 1));
  EXPECT_EQ(end.x, 77);
  EXPECT_EQ(countPainted(*page), 0);
}

TEST(Text, DrawsGlyphsByTheirPlaces) {
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  IFMFontSource* const source = query<IFMFontSource>(font.get());
  const u32 glyph = source->glyphOf('H');
  const GlyphPlace places[] = {{glyph, 0, 0}, {glyph, 40, -10}};
  for (const Through through : kBoth) {
    SCOPED_TRACE(nameOf(through));
    const Ref<IAGDC> page = makePage(through);
    page->setFillColor(kBlack);
    EXPECT_TRUE(drawGlyphs(*page, *font, 16, Matrix::translation(2, 40), places, 2));
    const PixelBox ink = inkOf(*page);
    EXPECT_LE(ink.top, 20);
    EXPECT_GE(ink.bottom, 39);
    EXPECT_GE(ink.right, 48);
  }
}

// All of them ask the one machine for characters that their fonts have not.
TEST(Text, IsDrawnByThreadsOfTheirOwnFonts) {
  const Ref<FMFontMachine> machine = FMFontMachine::shared();
  const u32 refs = machine->refCount();
  std::vector<std::pair<Ref<IAGDC>, Ref<IFMFont>>> kept;
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    const Ref<IAGDC> page = makePage(kBoth[i % 2]);
    const Ref<IFMFont> font = fontFor(i ? L"Helvetica" : L"Courier");
    threads.emplace_back([page = page.get(), font = font.get()] {
      for (wchar_t first = 0x4E00; first < 0x5600; first = static_cast<wchar_t>(first + 2)) {
        EXPECT_TRUE(draw(*page, *font, 12, Matrix::translation(4, 30), {first, static_cast<wchar_t>(first + 1)}));
      }
    });
    kept.push_back({page, font});
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(machine->refCount(), refs);
}

TEST(Text, LevelsFollowTheUsersSetting) {
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  const auto greys = [&](i32 setting) {
    fontSettings().antiAliasing = setting;
    const Ref<IAGDC> page = makePage(Through::Gdi);
    page->setFillColor(kBlack);
    draw(*page, *font, 20, Matrix::translation(4, 30), L"SoS");
    int count = 0;
    for (i32 y = 0; y < 48; ++y) {
      for (i32 x = 0; x < 64; ++x) {
        const Color color = pixelOf(*page, x, y);
        count += color != kWhite && color != kBlack;
      }
    }
    return count;
  };
  EXPECT_EQ(greys(1), 0);
  EXPECT_GT(greys(2), 20);
  EXPECT_GT(greys(3), 20);
}

TEST(Text, GlyphsThatWereDrawnAreKeptUntilMemoryIsShort) {
  const Ref<IFMFont> font = fontFor(L"Helvetica");
  const Ref<IAGDC> page = makePage(Through::Gdi);
  draw(*page, *font, 20, Matrix::translation(4, 30), L"abc");
  EXPECT_GT(glyphCache().sizeBytes(), 0u);
  EXPECT_TRUE(glyphCache().hibernate(true));
  EXPECT_EQ(glyphCache().sizeBytes(), 0u);
  EXPECT_FALSE(glyphCache().hibernate(true));
  for (u32 size = 8; size < 2000; ++size) {  // more than the cache holds
    draw(*page, *font, 8 + size / 25.0, Matrix::translation(4, 30), L"mwMW");
    ASSERT_LE(glyphCache().sizeBytes(), GlyphCache::kMostBytes);
  }
}

TEST(Text, ThousandsOfFontsLeaveNoObjectBehind) {
  const auto oneFont = [](int i) {
    const Ref<IFMFont> font = fontFor(i % 2 ? L"Courier" : L"Times-Bold");
    GlyphCoverage mask;
    auto* const source = query<IFMFontSource>(font.get());
    return source->coverage(source->glyphOf('A'), 12, 17, mask);
  };
  const auto drawAll = [] {
    const Ref<IFMFont> font = fontFor(L"Courier");
    for (const Through through : kBoth) {
      const Ref<IAGDC> page = makePage(through, 16, 16);
      draw(*page, *font, 12, Matrix::translation(0, 12), L"A\x4E2D\xE123");
      draw(*page, *font, 12, Matrix{1, 1, 0, 1, 0, 0}, L"A");
    }
  };
  drawAll();
  const int before = freeGdiObjects();
  for (int i = 0; i < 20; ++i) drawAll();
  for (int i = 0; i < soak(2000, 10000); ++i) ASSERT_TRUE(oneFont(i));
  EXPECT_EQ(freeGdiObjects(), before);
}

}  // namespace
}  // namespace corvix
