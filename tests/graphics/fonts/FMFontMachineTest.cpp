#include "graphics/fonts/FMFontMachine_p.h"
#include "graphics/fonts/FontNames_p.h"
#include "graphics/fonts/FontSettings_p.h"
#include "graphics/fonts/FontSource.h"
#include "graphics/fonts/SystemFont_p.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <string>

#include <windows.h>

namespace corvix {
namespace {

int CALLBACK takeFirst(const LOGFONTW* found, const TEXTMETRICW*, DWORD, LPARAM result) {
  *reinterpret_cast<std::wstring*>(result) = found->lfFaceName;
  return 0;
}

// Some family that this machine has, and the same in another letter case.
std::wstring installedFamily() {
  std::wstring family;
  LOGFONTW any{};
  any.lfCharSet = ANSI_CHARSET;
  HDC__* const screen = CreateCompatibleDC(nullptr);
  EnumFontFamiliesExW(screen, &any, takeFirst, reinterpret_cast<LPARAM>(&family), 0);
  DeleteDC(screen);
  return family;
}
std::wstring swappedCase(std::wstring text) {
  for (wchar_t& c : text) c = std::iswupper(c) ? std::towlower(c) : std::towupper(c);
  return text;
}

constexpr wchar_t kSubstitutes[] = L"Software\\Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes";

// An entry of the system's table of substitutes, for as long as the test runs.
class Alias {
 public:
  Alias(const wchar_t* name, const std::wstring& family) : name_(name) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSubstitutes, name, REG_SZ, family.c_str(),
                    static_cast<DWORD>(family.size() + 1) * DWORD{sizeof(wchar_t)});
  }
  ~Alias() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSubstitutes, name_); }

 private:
  const wchar_t* name_;
};

struct FontRow {
  const char* why;
  std::wstring asked;
  std::wstring family;  // empty: whatever the system's dialogs have
  bool isSubstitute;
};

TEST(FMFontMachine, GivesAFontForEveryName) {
  const std::wstring family = installedFamily();
  ASSERT_FALSE(family.empty());
  const Alias alive(L"Corvix Test Alias", family + L",0");
  const Alias dead(L"Corvix Test Dead Alias", L"No Such Font Either");
  const FontRow rows[] = {
      {"installed", family, family, false},
      {"installed, in another letter case", swappedCase(family), family, false},
      {"only in the system's table", L"Corvix Test Alias", family, true},
      {"its substitute is not installed either", L"Corvix Test Dead Alias", L"", true},
      {"unknown", L"No Such Font At All", L"", true},
      {"empty", L"", L"", true},
      {"longer than any family", std::wstring(5000, L'x'), L"", true},
  };
  FMFontMachine machine;
  for (const FontRow& row : rows) {
    SCOPED_TRACE(row.why);
    const auto font = Ref<IFMFont>::adopt(machine.createFont(row.asked.c_str()));
    ASSERT_TRUE(font);
    EXPECT_TRUE(row.family.empty() || font->family() == row.family);
    EXPECT_NE(*font->family(), 0);
    EXPECT_EQ(font->isSubstitute(), row.isSubstitute);
  }
  EXPECT_TRUE(Ref<IFMFont>::adopt(machine.createFont(nullptr)));
}

class Stubborn final : public BSmartObject, public IFMFontCreator {
  CORVIX_IDENTITY(Stubborn, 0xF0, 2, 3, 4, BSmartObject, IFMFontCreator)

 public:
  explicit Stubborn(std::wstring only) : only_(std::move(only)) {}
  IFMFont* createFont(const wchar_t* family) override {
    return family == only_ ? FMFontMachine().createFont(installedFamily().c_str()) : nullptr;
  }

 private:
  std::wstring only_;
};

class Throwing final : public BSmartObject, public IFMFontCreator {
  CORVIX_IDENTITY(Throwing, 0xF1, 2, 3, 4, BSmartObject, IFMFontCreator)

 public:
  IFMFont* createFont(const wchar_t*) override { throw 7; }
};

// Has nothing but what the machine has without it.
class Asking final : public BSmartObject, public IFMFontCreator {
  CORVIX_IDENTITY(Asking, 0x2C7E41B9, 0x4D05A8F3, 0x9163B27C, 0xE80F5D4A, BSmartObject, IFMFontCreator)

 public:
  explicit Asking(FMFontMachine& machine) : machine_(machine) {}
  IFMFont* createFont(const wchar_t* family) override { return machine_.createFont(family); }

 private:
  FMFontMachine& machine_;
};

TEST(FMFontMachine, AsksLaterCreatorsFirstAndKeepsThem) {
  auto creator = make<Stubborn>(L"Secret");
  {
    FMFontMachine machine;
    machine.addCreator(creator.get());
    machine.addCreator(nullptr);
    machine.addCreator(make<Throwing>().get());
    for (int i = 0; i < 2; ++i) machine.addCreator(make<Asking>(machine).get());
    EXPECT_EQ(creator->refCount(), 1u);
    EXPECT_FALSE(Ref<IFMFont>::adopt(machine.createFont(L"Secret"))->isSubstitute());
    EXPECT_TRUE(Ref<IFMFont>::adopt(machine.createFont(L"No Such Font At All"))->isSubstitute());
  }
  EXPECT_EQ(creator->refCount(), 0u);
}

struct NameRow {
  const wchar_t* name;
  const wchar_t* family;
  i32 weight;
  bool italic;
};

TEST(FontNames, AreTakenApart) {
  const NameRow rows[] = {
      {L"Helvetica", L"Helvetica", 0, false},
      {L"Helvetica-Bold", L"Helvetica", 700, false},
      {L"ABCDEF+Helvetica-BoldOblique", L"Helvetica", 700, true},
      {L"ABCDE+Helvetica", L"ABCDE+Helvetica", 0, false},  // five letters are no prefix
      {L"abcdef+Helvetica", L"abcdef+Helvetica", 0, false},
      {L"Arial,BoldItalic", L"Arial", 700, true},
      {L"Arial-BoldMT", L"Arial", 700, false},
      {L"ArialMT", L"Arial", 0, false},
      {L"TimesNewRomanPS-BoldItalicMT", L"TimesNewRoman", 700, true},
      {L"TimesNewRomanPSMT", L"TimesNewRoman", 0, false},
      {L"Times-Roman", L"Times", 0, false},
      {L"Some-Font", L"Some-Font", 0, false},  // "Font" is no style
      {L"Some-Font-SemiBold", L"Some-Font", 600, false},
      {L"-Bold", L"-Bold", 0, false},
      {L"Gill Sans,", L"Gill Sans,", 0, false},
      {L"", L"", 0, false},
      {L"ABCDEF+", L"ABCDEF+", 0, false},  // of nothing
  };
  for (const NameRow& row : rows) {
    const FontName parsed = parseFontName(row.name);
    EXPECT_EQ(parsed.family, row.family);
    EXPECT_EQ(parsed.weight, row.weight) << std::string(row.name, row.name + std::wcslen(row.name));
    EXPECT_EQ(parsed.italic, row.italic) << std::string(row.name, row.name + std::wcslen(row.name));
  }
}

TEST(FMFontMachine, KeepsFixedFontsFixed) {
  const struct {
    const wchar_t* name;
    u32 traits;  // that the document gives
  } rows[] = {{L"Courier", 0},
              {L"Courier-BoldOblique", 0},
              {L"ABCDEF+CourierNewPSMT", 0},
              {L"Courier New", 0},
              {L"ABCDEF+LiberationMono-Bold", 0},
              {L"NimbusMonoPS", 0},
              {L"Consolas", 0},
              {L"DejaVuSansMono", 0},
              {L"Arial", font_trait::kFixed}};
  for (const auto& [name, traits] : rows) {
    FontRequest request;
    request.family = name;
    request.traits = traits;
    const auto font = Ref<IFMFont>::adopt(FMFontMachine::shared()->createFontFor(request));
    auto* const source = query<IFMFontSource>(font.get());
    ASSERT_TRUE(source);
    EXPECT_TRUE(source->metrics().isFixedPitch);
    EXPECT_NEAR(source->advance(source->glyphOf('i')), source->advance(source->glyphOf('W')), 1e-6);
  }
  FontRequest unknown;
  unknown.family = L"No Such Font At All";
  unknown.traits = font_trait::kFixed;
  const auto font = Ref<IFMFont>::adopt(FMFontMachine::shared()->createFontFor(unknown));
  EXPECT_TRUE(query<IFMFontSource>(font.get())->metrics().isFixedPitch);
  // A character that is taken from another font comes from one of the same kind of pitch.
  for (const bool isFixed : {true, false}) {
    const auto like = Ref<IFMFont>::adopt(FMFontMachine::shared()->createFont(isFixed ? L"Courier" : L"Helvetica"));
    const auto other = Ref<IFMFont>::adopt(FMFontMachine::shared()->fontWithGlyph(0x42F, like.get()));
    EXPECT_EQ(query<IFMFontSource>(other.get())->metrics().isFixedPitch, isFixed);
  }
}

TEST(FMFontMachine, FindsFamiliesThatAreWrittenWithoutBlanks) {
  int found = 0;
  for (const InstalledFamily& family : installedFamilies()) {
    std::wstring name(family.name.view());
    std::erase(name, L' ');
    if (name == family.name.view() || parseFontName(name).family != name) continue;
    const auto font = Ref<IFMFont>::adopt(FMFontMachine::shared()->createFont((L"ABCDEF+" + name + L"-Bold").c_str()));
    EXPECT_EQ(std::wstring(font->family()), family.name.view());
    EXPECT_FALSE(font->isSubstitute());
    ++found;
  }
  EXPECT_GT(found, 0);
}

struct Counter final : IGlyphSink {
  void moveTo(Point p) override { see(p); }
  void lineTo(Point p) override { see(p); }
  void curveTo(Point a, Point b, Point p) override {
    see(a);
    see(b);
    see(p);
  }
  void see(Point p) {
    ++points;
    highest = std::min(highest, p.y);
    furthest = std::max(furthest, p.x);
  }
  int points = 0;
  double highest = 0, furthest = 0;
};

TEST(FMFontMachine, StretchesToTheWidthsThatWereAskedFor) {
  const u16 widths[] = {1000, 250, 0};
  FontRequest request;
  request.family = L"Helvetica-Narrow-Nobody-Has";
  request.widths = widths;
  request.firstCode = 'A';
  request.widthCount = 3;
  const auto fontOf = [&](FontKind kind) {
    request.kind = kind;
    return Ref<IFMFont>::adopt(FMFontMachine::shared()->createFontFor(request));
  };
  const auto advanceOf = [&](FontKind kind, u32 character) {
    const auto font = fontOf(kind);
    auto* const source = query<IFMFontSource>(font.get());
    return source->advance(source->glyphOf(character));
  };
  EXPECT_EQ(advanceOf(FontKind::Type1, 'A'), 1.0);
  EXPECT_EQ(advanceOf(FontKind::Type1, 'B'), 0.25);
  EXPECT_EQ(advanceOf(FontKind::Type1, 'C'), advanceOf(FontKind::TrueType, 'C'));  // 0: not known
  EXPECT_NE(advanceOf(FontKind::TrueType, 'A'), 1.0);  // not of a kind that the user's setting lists

  // What is drawn is stretched as well.
  const auto stretched = fontOf(FontKind::Type1), own = fontOf(FontKind::TrueType);
  for (const u32 character : {u32{'A'}, u32{'B'}, u32{'C'}}) {
    double right[2] = {}, width[2] = {};
    int i = 0;
    for (IFMFont* const font : {stretched.get(), own.get()}) {
      auto* const source = query<IFMFontSource>(font);
      Counter seen;
      GlyphCoverage coverage;
      EXPECT_TRUE(source->outline(source->glyphOf(character), seen));
      EXPECT_TRUE(source->coverage(source->glyphOf(character), 60, 65, coverage));
      right[i] = seen.furthest;
      width[i++] = coverage.width;
    }
    const double stretch = advanceOf(FontKind::Type1, character) / advanceOf(FontKind::TrueType, character);
    EXPECT_NEAR(right[0], right[1] * stretch, 0.001) << character;
    EXPECT_NEAR(width[0], width[1] * stretch, 2) << character;
  }
}

TEST(FontKinds, AreReadFromTheSetting) {
  const auto bit = [](FontKind kind) { return 1u << static_cast<u32>(kind); };
  EXPECT_EQ(readFontKinds(L"Type1"), bit(FontKind::Type1));
  EXPECT_EQ(readFontKinds(L"truetype|TYPE1; cid"),
            bit(FontKind::Type1) | bit(FontKind::TrueType) | bit(FontKind::Type0));
  EXPECT_EQ(readFontKinds(L"All"), 0x1Fu);
  EXPECT_EQ(readFontKinds(L"Type"), 0u);
  EXPECT_EQ(readFontKinds(L""), 0u);
}

TEST(FMFontMachine, DrawsABoxForWhatNoFontHas) {
  for (const u32 character : {0xE123u, 0x10FFFDu}) {
    const auto font = Ref<IFMFont>::adopt(FMFontMachine::shared()->fontWithGlyph(character, nullptr));
    auto* const source = query<IFMFontSource>(font.get());
    ASSERT_TRUE(source);
    const u32 glyph = source->glyphOf(character);
    EXPECT_NE(glyph, 0u);
    EXPECT_GT(source->advance(glyph), 0.3);
    Counter counter;
    EXPECT_TRUE(source->outline(glyph, counter));
    EXPECT_GT(counter.points, 40);
    EXPECT_LT(counter.highest, -0.5);
    GlyphCoverage coverage;
    EXPECT_TRUE(source->coverage(glyph, 24, 65, coverage));
    EXPECT_GT(coverage.width, 8);
    EXPECT_FALSE(source->coverage(glyph, 24, 66, coverage));
    EXPECT_FALSE(source->coverage(glyph, 0, 65, coverage));
    EXPECT_FALSE(source->coverage(glyph, 1e9, 65, coverage));
  }
}

TEST(FMFontMachine, GivesUpTheCreatorThatWasAddedLast) {
  auto creator = make<Stubborn>(L"Secret");
  FMFontMachine machine;
  machine.addCreator(creator.get());
  machine.addCreator(creator.get());
  EXPECT_TRUE(machine.removeCreator(creator.get()));
  EXPECT_FALSE(Ref<IFMFont>::adopt(machine.createFont(L"Secret"))->isSubstitute());
  EXPECT_TRUE(machine.removeCreator(creator.get()));
  EXPECT_TRUE(Ref<IFMFont>::adopt(machine.createFont(L"Secret"))->isSubstitute());
  EXPECT_FALSE(machine.removeCreator(creator.get()));
  EXPECT_EQ(creator->refCount(), 0u);
}

}  // namespace
}  // namespace corvix
