// Images: what their pixels mean, how colours are converted, how they are placed, and files.
#include "graphics/images/CmykConversion.h"
#include "graphics/quality/Quality.h"
#include "tests/graphics/GraphicsTesting.h"

#include <windows.h>

namespace corvix::testing {
namespace {

constexpr CmykMode kModes[] = {CmykMode::Fast, CmykMode::Normal, CmykMode::Best, CmykMode::Alternate,
                               CmykMode::ByTable};

Color convert(u8 c, u8 m, u8 y, u8 k, CmykMode mode) {
  const u8 cmyk[4] = {c, m, y, k};
  u8 bgr[3];
  cmykToRgb(cmyk, 1, mode, bgr);
  return rgb(bgr[2], bgr[1], bgr[0]);
}

TEST(Cmyk, CornersAreExactInEveryMode) {
  for (const CmykMode mode : kModes) {
    for (u32 corner = 0; corner < 16; ++corner) {
      const auto ink = [corner](u32 bit) { return static_cast<u8>(corner >> bit & 1 ? 255 : 0); };
      const auto level = [&](u32 bit) { return ink(bit) || ink(3) ? 0u : 255u; };
      EXPECT_EQ(convert(ink(0), ink(1), ink(2), ink(3), mode), rgb(level(0), level(1), level(2)))
          << static_cast<int>(mode) << ' ' << corner;
    }
  }
}

TEST(Cmyk, EveryLevelFollowsItsFormula) {
  const auto tableInk = [](double ink) {
    const auto place = static_cast<std::size_t>(ink / 15);
    if (place >= 17) return 1.0;
    const double rest = ink / 15 - static_cast<double>(place);
    return (kInkTable[place] * (1 - rest) + kInkTable[place + 1] * rest) / 255;
  };
  const auto grown = [](double a) { return a + 0.8 * a * (1 - a); };
  const auto screen = [](double light) {
    return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  };
  for (int ink = 0; ink < 256; ++ink) {
    for (int black = 0; black < 256; black += 5) {
      const double a = ink / 255.0;
      const double k = black / 255.0;
      const double expected[] = {1 - std::min(1.0, a + k), (1 - a) * (1 - k), screen((1 - grown(a)) * (1 - grown(k))),
                                 1 - std::max(a, k), (1 - tableInk(ink)) * (1 - tableInk(black))};
      const double slack[] = {0.01, 0.51, 2.0, 0.01, 1.5};
      for (int i = 0; i < 5; ++i) {
        const auto level = redOf(convert(static_cast<u8>(ink), 0, 0, static_cast<u8>(black), kModes[i]));
        // Near black a step of light is many steps of the screen.
        if (i == 2 && expected[i] < 0.1) continue;
        ASSERT_NEAR(level, 255 * expected[i], slack[i]) << "mode " << i + 1 << ", " << ink << ", " << black;
      }
    }
  }
}

struct ImageRow {
  ColorModel model;
  i32 bits;
  i32 width;
  i32 height;
  i32 stride;  // 0: there is no such image
};
const ImageRow kImages[] = {{ColorModel::Indexed, 1, 33, 2, 8},      {ColorModel::Indexed, 2, 17, 2, 8},
                            {ColorModel::Indexed, 4, 9, 1, 8},       {ColorModel::Indexed, 0, 5, 1, 8},
                            {ColorModel::Gray, 0, 1, 1, 4},          {ColorModel::Rgb, 0, 3, 1, 12},
                            {ColorModel::Argb, 0, 3, 1, 12},         {ColorModel::Cmyk, 32, 3, 1, 12},
                            {ColorModel::Rgb, 24, 1, 1, 4},          {ColorModel::Indexed, 3, 5, 5, 0},
                            {ColorModel::Rgb, 32, 5, 5, 0},          {ColorModel::Rgb, -1, 5, 5, 0},
                            {ColorModel::Rgb, 0, 0, 5, 0},           {ColorModel::Rgb, 0, 5, 0, 0},
                            {ColorModel::Rgb, 0, -5, 5, 0},          {ColorModel::Rgb, 0, 1 << 30, 1 << 30, 0},
                            {ColorModel::Argb, 0, 0x7FFFFFFF, 1, 0}, {ColorModel::Gray, 16, 5, 5, 0},
                            {static_cast<ColorModel>(9), 0, 5, 5, 0}};

TEST(Image, SizesAndDepths) {
  const Ref<IAGDC> page = makePage(Through::Gdi, 8, 8);
  for (const ImageRow& row : kImages) {
    const auto image = Ref<IAGImage>::adopt(page->createImage(row.width, row.height, row.model, row.bits));
    ASSERT_EQ(static_cast<bool>(image), row.stride > 0) << row.width << ' ' << row.height << ' ' << row.bits;
    if (!image) continue;
    EXPECT_EQ(image->strideBytes(), row.stride);
    EXPECT_TRUE(image->row(row.height - 1) && !image->row(row.height) && !image->row(-1));
  }
}

Ref<IAGImage> gradient(IAGDC& page, ColorModel model, i32 bits, i32 width = 5, i32 height = 3) {
  auto image = Ref<IAGImage>::adopt(page.createImage(width, height, model, bits));
  u8 next = 7;
  for (i32 y = 0; y < height; ++y) {
    for (i32 i = 0; i < image->strideBytes(); ++i, next = static_cast<u8>(next * 5 + 31)) image->row(y)[i] = next;
  }
  if (model == ColorModel::Argb) {
    for (i32 y = 0; y < height; ++y) {
      for (i32 x = 0; x < width; ++x) image->row(y)[4 * x + 3] = 255;
    }
  }
  const Color colors[] = {rgb(200, 10, 20), rgb(10, 200, 30), rgb(20, 30, 200)};
  if (model == ColorModel::Indexed) image->setPalette(colors, bits == 1 ? 2 : 3);  // too short: the rest is black
  return image;
}

constexpr struct {
  ColorModel model;
  i32 bits;
} kFormats[] = {{ColorModel::Indexed, 1}, {ColorModel::Indexed, 2}, {ColorModel::Indexed, 4}, {ColorModel::Indexed, 8},
                {ColorModel::Gray, 8},    {ColorModel::Rgb, 24},    {ColorModel::Argb, 32},   {ColorModel::Cmyk, 32}};

TEST(Image, DrawsItsOwnPixelsPlainAndEnlarged) {
  for (const Through through : kBoth) {
    for (const auto& format : kFormats) {
      const Ref<IAGDC> page = makePage(through);
      const auto image = gradient(*page, format.model, format.bits);
      const std::string row = nameOf(through) + ' ' + std::to_string(format.bits);
      EXPECT_TRUE(page->drawImagePixel(image.get(), 2, 1) && page->drawImage(image.get(), 20, 1, 20, 12) &&
                  page->drawImagePart(image.get(), {1, 1, 4, 3}, 20, 20, 3, 2) &&
                  page->drawImageTurned(image.get(), 2, 20, 3, 5, ImageTurn::Turn90) &&
                  page->drawImageOffscreen(image.get(), 2, 30, 5, 3) &&
                  page->drawImageThroughMemory(image.get(), 10, 30))
          << row;
      for (i32 y = 0; y < 3; ++y) {
        for (i32 x = 0; x < 5; ++x) {
          Color color;
          ASSERT_TRUE(image->pixelColor(x, y, &color));
          EXPECT_EQ(pixelOf(*page, 2 + x, 1 + y), color) << row << " plain " << x << ' ' << y;
          EXPECT_EQ(pixelOf(*page, 20 + 4 * x, 1 + 4 * y), color) << row << " enlarged " << x << ' ' << y;
          EXPECT_EQ(pixelOf(*page, 23 + 4 * x, 4 + 4 * y), color) << row << " enlarged " << x << ' ' << y;
          EXPECT_EQ(pixelOf(*page, 2 + 2 - y, 20 + x), color) << row << " turned " << x << ' ' << y;
          EXPECT_EQ(pixelOf(*page, 2 + x, 30 + y), color) << row << " offscreen";
          EXPECT_EQ(pixelOf(*page, 10 + x, 30 + y), color) << row << " memory";
          if (x >= 1 && x < 4 && y >= 1) {
            EXPECT_EQ(pixelOf(*page, 19 + x, 19 + y), color) << row << " part";
          }
        }
      }
    }
  }
}

TEST(Image, EffectsAndMasks) {
  const float swapRedAndBlue[25] = {0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 16, 16);
    const auto image = Ref<IAGImage>::adopt(page->createImage(1, 1, ColorModel::Rgb, 0));
    image->row(0)[0] = 10;
    image->row(0)[2] = 200;
    const ColorChange change = {rgb(200, 0, 10), rgb(1, 2, 3)};
    EXPECT_TRUE(page->drawImageMatrix(image.get(), 0, 0, 1, 1, swapRedAndBlue));
    EXPECT_TRUE(page->drawImageRemapped(image.get(), 2, 0, 1, 1, &change, 1));
    const auto mask = Ref<IAGImage>::adopt(page->createImage(2, 1, ColorModel::Indexed, 1));
    mask->row(0)[0] = 0x40;
    EXPECT_TRUE(page->setFillColor(rgb(9, 8, 7)) && page->drawImageMask(mask.get(), 4, 0, 2, 1));
    EXPECT_EQ(pixelOf(*page, 0, 0), rgb(10, 0, 200)) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 2, 0), rgb(1, 2, 3)) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 4, 0), kWhite) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 5, 0), rgb(9, 8, 7)) << nameOf(through);
    EXPECT_FALSE(page->drawImageMask(image.get(), 4, 0, 2, 1));
    EXPECT_FALSE(page->drawImage(nullptr, 0, 0, 1, 1));
    EXPECT_FALSE(page->drawImage(image.get(), std::nan(""), 0, 1, 1));
    EXPECT_FALSE(page->drawImage(image.get(), 0, 0, 1e300, 1));
    EXPECT_FALSE(page->drawImagePart(image.get(), {0, 0, 2, 1}, 0, 0, 1, 1));
  }
}

struct RotationRow {
  RotationMode mode;
  bool atMiddle;  // painted
  bool atCorner;  // of the box around it
};
const RotationRow kRotations[] = {{RotationMode::DoNotShow, false, false},
                                  {RotationMode::DoNotRotate, true, true},
                                  {RotationMode::QuarterTurns, true, true},
                                  {RotationMode::Normal, true, false},
                                  {RotationMode::Best, true, false}};

TEST(Image, RotationFollowsTheSetting) {
  for (const Through through : kBoth) {
    for (const RotationRow& row : kRotations) {
      quality().imageRotation = static_cast<i32>(row.mode);
      const Ref<IAGDC> page = makePage(through);
      const auto image = Ref<IAGImage>::adopt(page->createImage(4, 4, ColorModel::Rgb, 0));  // black
      const Matrix unit = Matrix::translation(-0.5, -0.5)
                              .then(Matrix::scaling(20, 20))
                              .then(Matrix::rotation(std::acos(-1.0) / 4))
                              .then(Matrix::translation(32, 24));
      EXPECT_TRUE(page->drawImageTransformed(image.get(), unit));
      EXPECT_EQ(pixelOf(*page, 32, 24) == kBlack, row.atMiddle) << nameOf(through) << static_cast<int>(row.mode);
      EXPECT_EQ(pixelOf(*page, 20, 12) == kBlack, row.atCorner) << nameOf(through) << static_cast<int>(row.mode);
    }
  }
  quality().imageRotation = static_cast<i32>(RotationMode::Best);
}

TEST(Image, FilesKeepEveryPixel) {
  wchar_t folder[MAX_PATH];
  GetTempPathW(MAX_PATH, folder);
  const std::wstring path = folder + std::wstring(L"corvix-image-test");
  const Ref<IAGDC> page = makePage(Through::Gdi, 8, 8);
  for (const ImageFile kind : {ImageFile::Bmp, ImageFile::Png}) {
    for (const auto& format : kFormats) {
      if (kind == ImageFile::Bmp && format.model == ColorModel::Argb) continue;  // BMP files keep no alpha
      const auto image = gradient(*page, format.model, format.bits, 13, 7);
      ASSERT_TRUE(image->saveFile(path.c_str(), kind)) << format.bits;
      const auto loaded = Ref<IAGImage>::adopt(page->createImage(1, 1, ColorModel::Rgb, 0));
      ASSERT_TRUE(loaded->loadFile(path.c_str())) << format.bits;
      ASSERT_EQ(loaded->width(), 13);
      ASSERT_EQ(loaded->height(), 7);
      int wrong = 0;
      for (i32 i = 0; i < 13 * 7; ++i) {
        Color a;
        Color b;
        image->pixelColor(i % 13, i / 13, &a);
        loaded->pixelColor(i % 13, i / 13, &b);
        wrong += a != b;
      }
      EXPECT_EQ(wrong, 0) << static_cast<int>(kind) << ' ' << format.bits;
    }
  }
  // What cannot be read or written leaves what there is.
  const auto image = gradient(*page, ColorModel::Rgb, 24);
  EXPECT_FALSE(image->loadFile(L"Z:\\no\\such\\file.png"));
  EXPECT_FALSE(image->saveFile(L"Z:\\no\\such\\folder\\file.png", ImageFile::Png));
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written;
  WriteFile(file, "\x89PNG\r\n\x1a\n and nothing more", 20, &written, nullptr);
  CloseHandle(file);
  EXPECT_FALSE(image->loadFile(path.c_str()));
  EXPECT_EQ(image->width(), 5);
  DeleteFileW(path.c_str());
}

TEST(Image, CaptureCopiesWhatIsThere) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 8, 8);
    page->setPixel(1, 2, rgb(5, 6, 7));
    page->setOrigin(3, 3);
    const auto image = Ref<IAGImage>::adopt(page->createImage(8, 8, ColorModel::Argb, 0));
    EXPECT_TRUE(image->captureFrom(*page, -1, 0));
    Color color;
    EXPECT_TRUE(image->pixelColor(2, 2, &color));
    EXPECT_EQ(color, rgb(5, 6, 7));
    EXPECT_TRUE(image->pixelColor(0, 0, &color));
    EXPECT_EQ(color, 0u);  // the page begins at 1
  }
}

}  // namespace
}  // namespace corvix::testing
