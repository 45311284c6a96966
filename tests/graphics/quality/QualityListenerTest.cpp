// What the settings make of drawing, while the program runs.
#include "core/baselib/objects/Ref.h"
#include "core/settings/BSettings_p.h"
#include "graphics/images/CmykConversion_p.h"
#include "graphics/quality/QualityListener_p.h"
#include "tests/graphics/Pages.h"

namespace corvix {
namespace {

using namespace testing_support;

struct ClipRow {
  Variant value;
  bool isOn;
};
const ClipRow kClipRows[] = {{Variant(L"0"), false},  {Variant(L"1"), true},    {Variant(L"true"), false},
                             {Variant(0.4), false},   {Variant(0.5), true},     {Variant(-0.5), true},
                             {Variant(i32{7}), true}, {Variant(i32{0}), false}, {Variant(true), true},
                             {Variant(false), false}, {Variant(), false}};

TEST(Quality, ClipModeByTypeOfValue) {
  const auto settings = make<BSettings>();
  {
    const QualityListener listener(*settings);
    EXPECT_TRUE(quality().softwareClipping);  // absent
    for (const ClipRow& row : kClipRows) {
      settings->setValue(L"Quality", L"GDCClipMode", row.value);
      EXPECT_EQ(quality().softwareClipping, row.isOn) << &row - kClipRows;
    }
  }
  settings->setValue(L"Quality", L"GDCClipMode", Variant(true));
  EXPECT_FALSE(quality().softwareClipping);  // nobody listens any more
  quality().softwareClipping = true;
}

TEST(Quality, ChangesWhatIsDrawnNext) {
  const auto settings = make<BSettings>();
  const QualityListener listener(*settings);
  const Ref<IAGDC> page = makePage(Through::Gdi, 8, 8);
  const auto image = Ref<IAGImage>::adopt(page->createImage(1, 1, ColorModel::Cmyk, 0));
  image->row(0)[0] = 100;
  image->row(0)[3] = 60;
  for (i32 mode = 1; mode <= 5; ++mode) {
    settings->setValue(L"Quality", L"FullColorConversion", Variant(mode));
    u8 bgr[3];
    cmykToRgb(image->row(0), 1, static_cast<CmykMode>(mode), bgr);
    EXPECT_TRUE(page->drawImagePixel(image.get(), 2, 2));
    EXPECT_EQ(redOf(pixelOf(*page, 2, 2)), bgr[2]) << mode;
  }
  // Smart lines: a thin line gets its caps.
  for (const bool isSmart : {false, true}) {
    settings->setValue(L"Quality", L"SmartLines", Variant(isSmart));
    EXPECT_EQ(quality().smartLines, isSmart);
  }
  settings->setValue(L"Quality", L"GDCSmartLines", Variant(false));  // counts more
  EXPECT_FALSE(quality().smartLines);
  settings->setValue(L"Quality", L"ImageStretchMode", Variant(i32{1}));
  EXPECT_EQ(quality().stretchMode(), StretchMode::Fast);
  settings->setValue(L"Quality", L"ImageStretchMode", Variant(i32{99}));
  EXPECT_EQ(quality().stretchMode(), StretchMode::Normal);
  settings->setValue(L"Quality", L"ImageSizeLimit", Variant(L"2"));
  EXPECT_EQ(quality().largestImage(), 2 << 24);
  settings->setValue(L"Quality", L"ImageSizeLimit", Variant(L"0"));
  EXPECT_EQ(quality().largestImage(), INT64_MAX);
  const auto fresh = make<BSettings>();
  const QualityListener defaults(*fresh);
}

}  // namespace
}  // namespace corvix
