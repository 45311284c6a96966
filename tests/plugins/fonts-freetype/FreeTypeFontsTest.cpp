// The plug-in through the font machine: nothing of it is linked.
#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/fonts/FontFinder.h"
#include "graphics/fonts/FontKeeper.h"
#include "graphics/fonts/FontProgram.h"
#include "graphics/fonts/FontSource.h"
#include "graphics/text/Text.h"
#include "shell/Shell.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <random>

namespace corvix {
namespace {

const std::string kMade = CORVIX_MADE_FONTS;
const std::string kFonts = "/usr/share/fonts/";  // of the packages that set-up installs

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The program that an OpenType file wraps, as PDF documents have it.
std::string bareCff(const std::string& file) {
  const auto number = [&](std::size_t at) {
    u32 value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<u8>(file[at + i]);
    return value;
  };
  for (std::size_t row = 12; row + 16 <= file.size(); row += 16) {
    if (file.compare(row, 4, "CFF ") == 0) return file.substr(number(row + 8), number(row + 12));
  }
  return {};
}

Ref<IFMFont> fontOf(const std::string& bytes) {
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  const auto machine = createObject<IFMFontChooser>(manager, L"IFMFontMachine.Instance");
  const auto stream =
      make<BMemoryInputStream>(bytes.data(), static_cast<u32>(bytes.size()), BMemoryInputStream::Bytes::Borrow);
  stream->seek(7);  // programs are read from their beginning
  FontRequest request;
  request.family = L"ABCDEF+No Such Font";
  request.program = stream.get();
  return Ref<IFMFont>::adopt(machine->createFontFor(request));
}

// The area inside an outline, in square ems.
struct Area final : IGlyphSink {
  void moveTo(Point to) override { last = to; }
  void lineTo(Point to) override {
    area += (last.x * to.y - to.x * last.y) / 2;
    last = to;
    ++steps;
  }
  void curveTo(Point a, Point b, Point to) override {
    const Point from = last;
    for (int i = 1; i <= 32; ++i) {
      const double t = i / 32.0;
      const double u = 1 - t;
      const auto at = [=](double p0, double p1, double p2, double p3) {
        return u * u * u * p0 + 3 * u * u * t * p1 + 3 * u * t * t * p2 + t * t * t * p3;
      };
      lineTo({at(from.x, a.x, b.x, to.x), at(from.y, a.y, b.y, to.y)});
    }
  }
  double area = 0;
  int steps = 0;
  Point last = {0, 0};
};

double areaOf(const GlyphCoverage& coverage) {
  double sum = 0;
  for (i32 i = 0; i < coverage.width * coverage.height; ++i) sum += coverage.rows[static_cast<std::size_t>(i)];
  return sum / 255;
}

struct ProgramRow {
  const char* name;
  std::string bytes;
  u32 character;  // or 0: the code 65
  double advance;
  double top;
};

std::vector<ProgramRow> goodPrograms() {
  const std::string wrapped = contentsOf(kFonts + "opentype/urw-base35/NimbusSans-Regular.otf");
  return {
      {"TrueType", contentsOf(kMade + "box.ttf"), 0, 0.6, -0.5},
      {"Type 1", contentsOf(kMade + "box.t1"), 0, 0.6, -0.5},
      {"CFF", contentsOf(kMade + "box.cff"), 0, 0.6, -0.5},
      {"CFF with a collection", contentsOf(kMade + "box-cid.cff"), 0, 0.6, -0.5},
      {"CID", contentsOf(kMade + "box.cid"), 0, 0.6, -0.5},
      {"Liberation Sans", contentsOf(kFonts + "truetype/liberation2/LiberationSans-Regular.ttf"), 'H', 0.722, -0.688},
      {"Nimbus Sans, Type 1", contentsOf(kFonts + "type1/urw-base35/NimbusSans-Regular.t1"), 'H', 0.722, -0.729},
      {"Nimbus Sans, OpenType", wrapped, 'H', 0.722, -0.729},
      {"Nimbus Sans, bare CFF", bareCff(wrapped), 'H', 0.722, -0.729},
  };
}

TEST(FreeTypeFonts, AGlyphIsItsOutlineAtEverySize) {
  for (const ProgramRow& row : goodPrograms()) {
    SCOPED_TRACE(row.name);
    const Ref<IFMFont> font = fontOf(row.bytes);
    auto* const source = query<IFMFontSource>(font.get());
    auto* const program = query<IFMFontProgram>(font.get());
    ASSERT_TRUE(source && program) << font->family();
    EXPECT_FALSE(font->isSubstitute());
    const u32 glyph = row.character ? source->glyphOf(row.character) : program->glyphOfCode(65);
    ASSERT_NE(glyph, 0u);
    EXPECT_NEAR(source->advance(glyph), row.advance, 0.001);
    Area outline;
    EXPECT_TRUE(source->outline(glyph, outline));
    GlyphCoverage mask;
    ASSERT_TRUE(source->coverage(glyph, 100, 65, mask));
    EXPECT_EQ(mask.top, std::floor(row.top * 100));
    for (const double size : {7.3, 40.0, 512.0}) {
      for (const i32 levels : {2, 17, 65}) {
        ASSERT_TRUE(source->coverage(glyph, size, levels, mask));
        const double wanted = std::abs(outline.area) * size * size;
        EXPECT_NEAR(areaOf(mask), wanted, levels == 2 ? 2.5 * size : 0.05 * wanted) << size << ", " << levels;
      }
    }
    EXPECT_FALSE(source->coverage(glyph, 513, 65, mask));
    EXPECT_FALSE(source->coverage(glyph, 12, 64, mask));
    EXPECT_FALSE(source->outline(0x7FFFFFFF, outline));
    EXPECT_EQ(source->advance(0x7FFFFFFF), 0);
  }
}

struct NameRow {
  const char* file;
  u32 code;
  const char* name;
  u32 byCode;
  u32 byName;
};

TEST(FreeTypeFonts, GlyphsHaveCodesAndNames) {
  const NameRow rows[] = {
      {"box.ttf", 65, "secret", 1, 0},  // of symbols, at 0xF041; without names
      {"box.t1", 65, "secret", 1, 1},       {"box.t1", 66, "other", 0, 0},      {"box.cff", 65, "secret", 1, 1},
      {"box-cid.cff", 65, "secret", 65, 0}, {"box-cid.cff", 64, nullptr, 0, 0}, {"box.cid", 65, "", 65, 0},
  };
  for (const NameRow& row : rows) {
    const Ref<IFMFont> font = fontOf(contentsOf(kMade + row.file));
    auto* const program = query<IFMFontProgram>(font.get());
    ASSERT_TRUE(program) << row.file;
    EXPECT_EQ(program->glyphOfCode(row.code), row.byCode) << row.file;
    EXPECT_EQ(program->glyphOfName(row.name), row.byName) << row.file;
    EXPECT_GT(program->glyphCount(), 1u);
  }
}

// Uses all that a font offers; whether it can is its own business.
void useUp(IFMFont& font) {
  auto* const source = query<IFMFontSource>(&font);
  auto* const program = query<IFMFontProgram>(&font);
  if (!source || !program) return;
  const u32 last = program->glyphCount() - 1;
  for (const u32 glyph : {source->glyphOf('H'), program->glyphOfCode(65), last / 2, last}) {
    GlyphCoverage mask;
    Area outline;
    source->advance(glyph);
    source->outline(glyph, outline);
    source->coverage(glyph, 20, 17, mask);
  }
}

TEST(FreeTypeFonts, ADamagedProgramHarmsNobody) {
  std::mt19937 random(1);
  for (const ProgramRow& row : goodPrograms()) {
    for (const std::size_t most : {std::size_t{0}, std::size_t{3}, std::size_t{40}}) {
      const Ref<IFMFont> font = fontOf(row.bytes.substr(0, most));
      EXPECT_TRUE(font && font->isSubstitute()) << row.name;  // another creator's
    }
    for (int i = 0; i < 12; ++i) {
      std::string bytes = row.bytes;
      for (int k = 0; k < 1 << i % 6; ++k)
        bytes[random() % std::min<std::size_t>(bytes.size(), 4096)] = static_cast<char>(random());
      if (i % 3 == 0) bytes.resize(random() % bytes.size());
      const Ref<IFMFont> font = fontOf(bytes);
      ASSERT_TRUE(font);
      useUp(*font);
    }
  }
}

TEST(FreeTypeFonts, PartsOfPartsEnd) {
  for (const char* const file : {"bomb.ttf", "bomb.cff", "bomb.t1"}) {
    const Ref<IFMFont> font = fontOf(contentsOf(kMade + file));
    auto* const source = query<IFMFontSource>(font.get());
    auto* const program = query<IFMFontProgram>(font.get());
    ASSERT_TRUE(source && program) << file;
    Area outline;
    EXPECT_FALSE(source->outline(program->glyphCount() - 1, outline)) << file;
    EXPECT_EQ(outline.steps, 0) << file;
    EXPECT_TRUE(source->outline(1, outline)) << file;
    EXPECT_NE(outline.steps, 0) << file;
  }
}

TEST(FreeTypeFonts, DrawTextAndKeepWhatDrawingLeavesWithThem) {
  const Ref<IFMFont> font = fontOf(contentsOf(kFonts + "type1/urw-base35/NimbusSans-Regular.t1"));
  auto* const keeper = query<IFMFontKeeper>(font.get());
  ASSERT_TRUE(keeper);
  EXPECT_EQ(keeper->kept(), nullptr);
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  const auto page =
      Ref<IAGDC>::adopt(createObject<IAGDCCreator>(manager, L"AGDC.Memory")->create(0, 0, nullptr, 200, 40));
  page->setFillColor(kBlack);
  Point end = {0, 0};
  EXPECT_TRUE(drawText(*page, *font, 20, Matrix::translation(4, 30), L"AVJ\xE123", 3, &end));
  EXPECT_NEAR(end.x, 20 * (0.667 + 0.667 + 0.5), 0.01);
  IBSmartObject* const kept = keeper->kept();
  EXPECT_NE(kept, nullptr);
  EXPECT_TRUE(drawText(*page, *font, 20, Matrix::translation(60, 30), L"AVJ\xE123", 4, &end));
  EXPECT_EQ(keeper->kept(), kept);
  int dark = 0;
  for (i32 x = 0; x < 200; ++x) {
    Color color = 0;
    dark += page->getPixel(x, 25, &color) && color != kWhite;
  }
  EXPECT_GT(dark, 20);
}

}  // namespace
}  // namespace corvix
