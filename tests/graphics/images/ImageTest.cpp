// Images: what their pixels mean, how they are placed, and files.
#include "graphics/ImageFreezer.h"
#include "graphics/Stencils.h"
#include "graphics/images/ImageBits_p.h"
#include "graphics/images/ImageCopies_p.h"
#include "graphics/quality/Quality_p.h"
#include "tests/graphics/Pages.h"
#include "tests/support/OwnFolder.h"

#include <windows.h>

namespace corvix {
namespace {

using namespace testing_support;

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
    EXPECT_TRUE(row.bits == 0 || image->bitsPerPixel() == row.bits);
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
                  page->drawImageOffscreen(image.get(), 35, 33, -5, -3) &&
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
          EXPECT_EQ(pixelOf(*page, 34 - x, 32 - y), color) << row << " offscreen, turned over " << x << ' ' << y;
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

// A mask lies where an image of the same matrix would, and is painted in the fill colour.
TEST(Image, MasksByMatrix) {
  struct Row {
    const char* name;
    Matrix unit;
  };
  const Row rows[] = {
      {"upright", {24, 0, 0, 18, 10, 8}},
      {"mirrored", {-24, 0, 0, 18, 40, 8}},
      {"a quarter turn", {0, 20, -15, 0, 40, 8}},
      {"rotated", Matrix::scaling(24, 18).then(Matrix::rotation(0.5)).then(Matrix::translation(25, 5))},
      {"made smaller and sheared", {5, 1, 0.5, 4, 20, 20}},
      {"nothing is left of it", {0, 0, 0, 5, 3, 3}},
  };
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    auto* const stencils = query<IAGStencils>(page.get());
    ASSERT_TRUE(stencils);
    const auto bits = gradient(*page, ColorModel::Indexed, 1, 8, 6);
    const auto grey = Ref<IAGImage>::adopt(page->createImage(8, 6, ColorModel::Gray, 0));
    const auto same = Ref<IAGImage>::adopt(page->createImage(8, 6, ColorModel::Argb, 0));
    for (const bool isSoft : {false, true}) {
      for (i32 i = 0; i < 48; ++i) {
        const u32 level = isSoft ? static_cast<u32>(i * 5) : bits->row(i / 8)[0] >> (7 - i % 8) & 1 ? 255 : 0;
        grey->row(i / 8)[i % 8] = static_cast<u8>(level);
        const Color color = argb(level, 200, 10, 30);
        std::copy_n(reinterpret_cast<const u8*>(&color), 4, same->row(i / 8) + 4 * (i % 8));
      }
      page->setFillColor(rgb(200, 10, 30));
      for (const Row& row : rows) {
        std::vector<Color> shown[2];
        for (std::vector<Color>& pixels : shown) {
          page->clear();
          EXPECT_TRUE(&pixels == shown ? stencils->drawMaskTransformed(isSoft ? grey.get() : bits.get(), row.unit)
                                       : page->drawImageTransformed(same.get(), row.unit));
          for (i32 i = 0; i < 64 * 48; ++i) pixels.push_back(pixelOf(*page, i % 64, i / 64));
        }
        EXPECT_EQ(shown[0], shown[1]) << nameOf(through) << ' ' << row.name << (isSoft ? ", soft" : "");
      }
    }
    const auto wrong = gradient(*page, ColorModel::Rgb, 0);
    EXPECT_FALSE(stencils->drawMaskTransformed(wrong.get(), Matrix::scaling(9, 9)));
    EXPECT_FALSE(stencils->drawMaskTransformed(nullptr, Matrix::scaling(9, 9)));
    EXPECT_FALSE(stencils->drawMaskTransformed(grey.get(), Matrix::scaling(std::nan(""), 9)));
  }
}

// Every pixel shows the average of its area, wherever it lies and whichever way it is turned.
TEST(Image, IsAveragedWhenMadeSmaller) {
  struct Row {
    const char* name;
    Matrix unit;
    PixelBox box;
  };
  const Row rows[] = {
      {"to a quarter", {16, 0, 0, 12, 4, 3}, {4, 3, 20, 15}},
      {"to a quarter of fractions", {16.2, 0, 0, 11.8, 3.9, 3.2}, {4, 3, 20, 15}},
      {"to a single pixel", {1, 0, 0, 1, 4, 3}, {4, 3, 5, 4}},
      {"lower only", {64, 0, 0, 6, 0, 3}, {0, 3, 64, 9}},
      {"mirrored", {-16, 0, 0, 12, 20, 3}, {4, 3, 20, 15}},
      {"turned", {0, 16, -12, 0, 20, 3}, {8, 3, 20, 19}},
      {"beyond the page", {32, 0, 0, 24, -16, -12}, {0, 0, 16, 12}},
  };
  for (const Through through : kBoth) {
    for (const auto& format : kFormats) {
      if (format.bits == 2) continue;  // its grey ramp has other levels
      const Ref<IAGDC> page = makePage(through);
      const auto image = Ref<IAGImage>::adopt(page->createImage(64, 48, format.model, format.bits));
      for (i32 y = 0; y < 48; ++y) {
        std::fill_n(image->row(y), image->strideBytes(), static_cast<u8>(y % 2 ? 0xFF : 0));
        for (i32 x = 0; format.model == ColorModel::Argb && x < 64; ++x) image->row(y)[4 * x + 3] = 0xFF;
      }
      for (const Row& row : rows) {
        page->clear();
        EXPECT_TRUE(page->drawImageTransformed(image.get(), row.unit));
        int wrong = 0;
        for (i32 y = 0; y < 48; ++y) {
          for (i32 x = 0; x < 64; ++x) {
            const bool isIn = x >= row.box.left && x < row.box.right && y >= row.box.top && y < row.box.bottom;
            const Color color = pixelOf(*page, x, y);
            wrong += isIn ? std::abs(static_cast<i32>(redOf(color)) - 127) > 1 : color != kWhite;
          }
        }
        EXPECT_EQ(wrong, 0) << nameOf(through) << ' ' << format.bits << ", " << row.name;
      }
    }
  }
}

// What is transparent has no colour to give, and what goes in by a part counts for that part.
TEST(Image, IsAveragedByAlphaAndByParts) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    const auto image = Ref<IAGImage>::adopt(page->createImage(4, 2, ColorModel::Argb, 0));
    for (i32 i = 0; i < 8; ++i) {
      const u8 pixel[4] = {static_cast<u8>(i % 2 ? 0xFF : 0), 0, 0, static_cast<u8>(i % 2 ? 0 : 0xFF)};
      std::copy(pixel, pixel + 4, image->row(i / 4) + 4 * (i % 4));
    }
    EXPECT_TRUE(page->drawImage(image.get(), 0, 0, 2, 1));
    EXPECT_NEAR(redOf(pixelOf(*page, 1, 0)), 127, 1) << nameOf(through);
    EXPECT_NEAR(blueOf(pixelOf(*page, 1, 0)), 127, 1) << nameOf(through);
    const auto row = Ref<IAGImage>::adopt(page->createImage(5, 1, ColorModel::Gray, 0));
    for (i32 i = 0; i < 5; ++i) row->row(0)[i] = static_cast<u8>(50 * i);
    EXPECT_TRUE(page->drawImage(row.get(), 0, 10, 2, 1));
    EXPECT_NEAR(redOf(pixelOf(*page, 0, 10)), (0 + 50 + 100 * 0.5) / 2.5, 1) << nameOf(through);
    EXPECT_NEAR(redOf(pixelOf(*page, 1, 10)), (100 * 0.5 + 150 + 200) / 2.5, 1) << nameOf(through);
  }
}

TEST(Image, TheLimitLeavesWhatIsDrawnAsLargeAsItIs) {
  constexpr i32 kSide = 4100;  // more than 16 megapixels
  const Ref<IAGDC> page = makePage(Through::Gdi, kSide, kSide);
  const auto image = Ref<IAGImage>::adopt(page->createImage(kSide, kSide, ColorModel::Indexed, 1));
  for (i32 y = 0; y < kSide; ++y) std::fill_n(image->row(y), image->strideBytes(), u8{0x55});
  EXPECT_TRUE(page->drawImagePixel(image.get(), 0, 0));
  for (const i32 x : {0, 1, 2, 3, 2001, 4098, 4099}) EXPECT_EQ(pixelOf(*page, x, 7), x % 2 ? kWhite : kBlack) << x;
}

TEST(Image, TurnsAndMirrors) {
  for (const Through through : kBoth) {
    for (const auto& format : kFormats) {
      for (i32 turn = 0; turn < 8; ++turn) {
        const Ref<IAGDC> page = makePage(through);
        const auto image = gradient(*page, format.model, format.bits);
        const bool isUpright = turn % 2 == 0;
        const i32 width = isUpright ? 5 : 3;
        const i32 height = isUpright ? 3 : 5;
        EXPECT_TRUE(page->drawImageTurned(image.get(), 7, 9, width, height, static_cast<ImageTurn>(turn)));
        int wrong = 0;
        for (i32 y = 0; y < height; ++y) {
          for (i32 x = 0; x < width; ++x) {
            const i32 across = turn < 4 ? x : width - 1 - x;  // mirrored last
            const i32 from[4][2] = {{across, y}, {y, 2 - across}, {4 - across, 2 - y}, {4 - y, across}};
            Color color = 0;
            image->pixelColor(from[turn % 4][0], from[turn % 4][1], &color);
            wrong += pixelOf(*page, 7 + x, 9 + y) != color;
          }
        }
        EXPECT_EQ(wrong, 0) << nameOf(through) << ' ' << format.bits << ", turn " << turn;
        EXPECT_LE(countPainted(*page), 15);
      }
    }
  }
}

struct AlongRow {
  const char* name;
  i32 interpolation;
  double shift;  // of the place, in pixels
};
const AlongRow kAlong[] = {{"nearest", 0, 0}, {"shifted", 0, 0.375}, {"bilinear", 192, 0}, {"bicubic", 255, 0}};

// However an image lies along the axes, both implementations cover the pixels of its box and no others.
void expectBoxCovered(const AlongRow& along, const PixelBox& part, ImageTurn turn, i32 width, i32 height) {
  using Draw = std::function<bool(IAGDC&, IAGImage&, IAGImage&)>;  // the part alone, the whole
  const i32 x = width < 0 ? 25 : 5;
  const i32 y = height < 0 ? 15 : 3;
  const double left = x + along.shift;
  const double top = y + along.shift;
  const Matrix onto = turnMatrix(turn).then({width * 1.0, 0, 0, height * 1.0, left, top});
  const Draw forms[] = {
      [&](IAGDC& page, IAGImage& own, IAGImage&) { return page.drawImageTurned(&own, x, y, width, height, turn); },
      [&](IAGDC& page, IAGImage& own, IAGImage&) { return page.drawImageTransformed(&own, onto); },
      [&](IAGDC& page, IAGImage& own, IAGImage&) { return page.drawImage(&own, left, top, width, height); },
      [&](IAGDC& page, IAGImage&, IAGImage& all) { return page.drawImagePart(&all, part, left, top, width, height); },
  };
  const auto box = [](double px, double py) {
    return px > 5 && px < 25 && py > 3 && py < 15 ? Covered::Edge : Covered::No;
  };
  const i32 columns = part.right - part.left;
  for (std::size_t form = 0; form < (turn == ImageTurn::None ? 4 : 2); ++form) {
    const std::string row = std::string(along.name) + ", " + std::to_string(columns) + " columns, turn " +
                            std::to_string(static_cast<int>(turn)) + ", " + std::to_string(width) + " by " +
                            std::to_string(height) + ", form " + std::to_string(form);
    const Ref<IAGDC> pages[] = {makePage(Through::Gdi, 32, 20), makePage(Through::GdiPlus, 32, 20)};
    for (const Ref<IAGDC>& page : pages) {
      const auto all = gradient(*page, ColorModel::Rgb, 0, part.right + 1, part.bottom + 1);
      const auto own = Ref<IAGImage>::adopt(page->createImage(columns, part.bottom - part.top, ColorModel::Rgb, 0));
      for (i32 i = 0; i < own->height(); ++i) {
        std::copy_n(all->row(part.top + i) + 3 * part.left, 3 * columns, own->row(i));
      }
      page->setInterpolation(along.interpolation);
      EXPECT_TRUE(forms[form](*page, *own, *all)) << row;
      expectCoverage(*page, kBlack, box, row);
      EXPECT_EQ(countPainted(*page), 240) << row << (page == pages[0] ? " GDI" : " GDI+");
    }
    if (along.interpolation || columns > 5) continue;  // smooth, or averaged by plain GDI as it becomes smaller
    int different = 0;
    for (i32 i = 0; i < 240; ++i) {
      different += pixelOf(*pages[0], 5 + i % 20, 3 + i / 20) != pixelOf(*pages[1], 5 + i % 20, 3 + i / 20);
    }
    EXPECT_EQ(different, 0) << row;
  }
}

TEST(Image, CoversItsBoxHoweverItLiesAlongTheAxes) {
  const PixelBox parts[] = {{1, 1, 6, 4}, {2, 1, 5, 4}, {1, 2, 21, 14}, {1, 1, 301, 281}};  // enlarged and reduced
  for (const AlongRow& along : kAlong) {
    for (const PixelBox& part : parts) {
      for (i32 turn = 0; turn < 8; ++turn) {
        for (const i32 width : {20, -20}) {
          for (const i32 height : {12, -12}) expectBoxCovered(along, part, static_cast<ImageTurn>(turn), width, height);
        }
      }
    }
  }
}

// Within the rounding of GDI+'s single precision: two levels off, or the neighbour's pixel where two of them meet.
bool isNearly(IAGDC& a, IAGDC& b, i32 x, i32 y) {
  const Color color = pixelOf(a, x, y);
  for (i32 i = 0; i < 9; ++i) {
    const Color other = pixelOf(b, x + (i + 4) % 9 % 3 - 1, y + (i + 4) % 9 / 3 - 1);
    const auto differ = [&](u32 shift) {
      return std::abs(static_cast<int>(color >> shift & 255) - static_cast<int>(other >> shift & 255)) > 2;
    };
    if (!differ(0) && !differ(8) && !differ(16)) return true;
  }
  return false;
}

// What a clip leaves of a large image is what it shows without the clip.
TEST(Image, PartsOfLargeImagesAreThoseOfTheWhole) {
  constexpr i32 kWidth = 320;
  constexpr i32 kHeight = 220;
  struct Row {
    const char* name;
    std::function<bool(IAGDC&, IAGImage&)> draw;
  };
  const Row rows[] = {
      {"1:1", [](IAGDC& page, IAGImage& image) { return page.drawImagePixel(&image, -3, -5); }},
      {"smaller", [](IAGDC& page, IAGImage& image) { return page.drawImage(&image, 3, 5, 241, 161); }},
      {"larger", [](IAGDC& page, IAGImage& image) { return page.drawImage(&image, -301, -205, 1033, 707); }},
      {"upside down", [](IAGDC& page, IAGImage& image) { return page.drawImage(&image, 0, 300, 400, -300); }},
      {"quarter",
       [](IAGDC& page, IAGImage& image) { return page.drawImageTurned(&image, -11, 0, 300, 400, ImageTurn::Turn90); }},
      {"mirrored, larger",
       [](IAGDC& page, IAGImage& image) {
         return page.drawImageTurned(&image, -11, -40, 900, 1200, ImageTurn::Turn270FlipX);
       }},
      {"rotated",
       [](IAGDC& page, IAGImage& image) {
         return page.drawImageTransformed(&image, Matrix::scaling(500, 400).then(Matrix::rotation(0.4)));
       }},
      {"part",
       [](IAGDC& page, IAGImage& image) {
         return page.drawImagePart(&image, {3, 5, 317, 210}, 0, 0, 314, 205);
       }},
      {"offscreen", [](IAGDC& page, IAGImage& image) { return page.drawImageOffscreen(&image, -20, -30, 500, 600); }},
      {"remapped",
       [](IAGDC& page, IAGImage& image) {
         const ColorChange change = {rgb(200, 10, 20), kBlack};
         return page.drawImageRemapped(&image, -3, -5, kWidth, kHeight, &change, 1);
       }},
  };
  const StretchMode modes[] = {StretchMode::Fast, StretchMode::Normal};
  for (const Through through : kBoth) {
    const Ref<IAGDC> whole = makePage(through, kWidth, kHeight);
    const Ref<IAGDC> part = makePage(through, kWidth, kHeight);
    part->clipRect(201, 150, 12, 12);
    for (const auto& format : kFormats) {
      if (format.bits == 2 || format.bits == 4 || format.bits == 8) continue;  // as 1 bit, or as 24
      const auto image = gradient(*whole, format.model, format.bits, kWidth, kHeight);
      for (const Row& row : rows) {
        for (const StretchMode mode : modes) {
          // The system's own averaging differs a little under a clip.
          if (through == Through::Gdi && mode != StretchMode::Fast) continue;
          quality().imageStretch = static_cast<i32>(mode);
          whole->clear();
          part->clear();
          whole->setInterpolation(mode == StretchMode::Normal ? 192 : 0);
          part->setInterpolation(whole->interpolation());
          const std::string name = nameOf(through) + ", " + row.name + ' ' + std::to_string(format.bits) + " mode " +
                                   std::to_string(static_cast<int>(mode));
          EXPECT_TRUE(row.draw(*whole, *image) && row.draw(*part, *image)) << name;
          int wrong = 0;
          int painted = 0;
          for (i32 y = 148; y < 164; ++y) {
            for (i32 x = 199; x < 215; ++x) {
              const bool isInside = x >= 201 && x < 213 && y >= 150 && y < 162;
              wrong += isInside ? !isNearly(*part, *whole, x, y) : pixelOf(*part, x, y) != kWhite;
              painted += isInside && pixelOf(*part, x, y) != kWhite;
            }
          }
          EXPECT_EQ(wrong, 0) << name;
          EXPECT_GT(painted, 0) << name;
        }
      }
    }
  }
  quality().imageStretch = static_cast<i32>(StretchMode::Normal);
}

// Large images, and text, go straight into a page's own bitmap, unless the clip is no rectangle: the same pixels.
TEST(Image, LargeOnesAreTheSameThroughTheSystem) {
  struct Row {
    const char* name;
    i32 width;
    i32 height;
    double x;
    Box clip;
  };
  const Row rows[] = {{"as large", 600, 500, -20, {0, 0, 400, 300}},
                      {"made smaller", 390, 290, 5, {0, 0, 400, 300}},
                      {"made smaller, of fractions", 371, 283, 3, {20, 30, 333, 250}},
                      {"a part of it", 600, 500, -100, {50, 60, 200, 160}}};
  for (const Through through : kBoth) {
    for (const ColorModel model : {ColorModel::Gray, ColorModel::Rgb, ColorModel::Cmyk, ColorModel::Argb}) {
      const Ref<IAGDC> pages[] = {makePage(through, 400, 300), makePage(through, 400, 300)};
      const auto image = gradient(*pages[0], model, 0, 600, 500);
      for (const Row& row : rows) {
        for (const Ref<IAGDC>& page : pages) {
          page->clear();
          page->setOrigin(7, -4);
          page->saveClip();
          page->clipRect(row.clip.left, row.clip.top, row.clip.right - row.clip.left, row.clip.bottom - row.clip.top);
          if (page == pages[1]) page->excludeRect(row.clip.left + 60, row.clip.top + 70, 1, 1);
          EXPECT_TRUE(page->drawImage(image.get(), row.x, -2, row.width, row.height));
          page->restoreClip();
          page->setOrigin(0, 0);
        }
        int different = 0;
        int painted = 0;
        for (i32 i = 0; i < 400 * 300; ++i) {
          const Color color = pixelOf(*pages[0], i % 400, i / 400);
          different += color != pixelOf(*pages[1], i % 400, i / 400);
          painted += color != kWhite;
        }
        EXPECT_LE(different, 1) << nameOf(through) << ' ' << row.name << static_cast<int>(model);
        EXPECT_GT(painted, 10000) << nameOf(through) << ' ' << row.name << static_cast<int>(model);
      }
    }
  }
}

// Only what is seen counts against the limit; more than that is made smaller.
TEST(Image, LargestSizeCountsWhatIsSeen) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through);
    const auto image = Ref<IAGImage>::adopt(page->createImage(6000, 3000, ColorModel::Gray, 0));
    image->row(2001)[3001] = 255;  // odd: made smaller by two it is left out
    EXPECT_TRUE(page->drawImagePixel(image.get(), -3000, -2000)) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 1, 1), kWhite) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 2, 1), kBlack) << nameOf(through);
    page->clear();
    EXPECT_TRUE(page->drawImage(image.get(), 0, 0, 64, 48)) << nameOf(through);
    EXPECT_EQ(pixelOf(*page, 40, 40), kBlack) << nameOf(through);
  }
}

struct FrozenRow {
  const char* name;
  ColorModel model;
  i32 size;  // of 512 by 512 pixels drawn
};

// What is kept of a frozen image never hides what is written to it, and goes with it.
TEST(Image, KeepsCopiesOnlyWhileItIsFrozen) {
  const FrozenRow rows[] = {{"made smaller", ColorModel::Gray, 64}, {"converted", ColorModel::Cmyk, 512}};
  ImageCopies& copies = imageCopies();
  for (const Through through : kBoth) {
    for (const FrozenRow& row : rows) {
      SCOPED_TRACE(nameOf(through) + ' ' + row.name);
      const Ref<IAGDC> page = makePage(through);
      auto image = Ref<IAGImage>::adopt(page->createImage(512, 512, row.model, 0));
      u8* const kept = image->row(0);
      auto* const freezer = query<IAGImageFreezer>(image.get());
      const auto shown = [&](u8 level) {
        page->clear();
        EXPECT_TRUE(page->drawImage(image.get(), 0, 0, row.size, row.size));
        return pixelOf(*page, 7, 7) == (row.model == ColorModel::Gray ? rgb(level, level, level)
                                                                      : rgb(255u - level, 255u - level, 255u - level));
      };
      const auto write = [&](u8 level) {
        for (i32 i = 0; i < image->strideBytes() * 512; ++i) {
          kept[i] = row.model == ColorModel::Cmyk && i % 4 != 3 ? u8{0} : level;
        }
      };
      quality().cmykConversion = static_cast<i32>(CmykMode::Fast);
      EXPECT_TRUE(shown(0));
      write(50);
      EXPECT_TRUE(shown(50)) << "nothing is kept of what nobody froze";
      EXPECT_EQ(copies.sizeBytes(), 0u);

      EXPECT_TRUE(freezer->freeze() && freezer->isFrozen() && !freezer->freeze());
      page->saveClip();
      page->clipRect(0, 0, 20, 20);
      EXPECT_TRUE(shown(50));
      EXPECT_LT(copies.sizeBytes(), 1000u) << "a part, the first time";
      EXPECT_TRUE(shown(50) && shown(50));
      EXPECT_GT(copies.sizeBytes(), 10000u);
      page->restoreClip();
      EXPECT_TRUE(shown(50));
      EXPECT_EQ(freezer->readRow(0), kept);
      EXPECT_TRUE(freezer->isFrozen() && !freezer->readRow(-1) && !freezer->readRow(512));
      Color color = 0;
      EXPECT_TRUE(image->pixelColor(3, 3, &color) && freezer->isFrozen());
      EXPECT_TRUE(copies.hibernate(true) && !copies.hibernate(true));
      EXPECT_TRUE(shown(50) && copies.sizeBytes() > 0);

      EXPECT_EQ(image->row(0), kept);
      EXPECT_FALSE(freezer->isFrozen());
      EXPECT_EQ(copies.sizeBytes(), 0u);
      write(90);
      EXPECT_TRUE(shown(90));
      write(120);
      EXPECT_TRUE(shown(120));

      EXPECT_TRUE(freezer->freeze() && shown(120) && shown(120));
      image.reset();
      EXPECT_EQ(copies.sizeBytes(), 0u);
    }
  }
  quality().cmykConversion = static_cast<i32>(CmykMode::ByTable);
}

TEST(Image, ThawsWhenItsPixelsOrColorsChange) {
  const Ref<IAGDC> page = makePage(Through::Gdi);
  const Color colors[] = {rgb(1, 2, 3), rgb(4, 5, 6)};
  const OwnFolder folder;
  const std::wstring path = folder.file(L"x.png").wstring();
  EXPECT_TRUE(gradient(*page, ColorModel::Rgb, 0)->saveFile(path.c_str(), ImageFile::Png));
  const std::function<bool(IAGImage&)> changes[] = {
      [&](IAGImage& image) { return image.setPalette(colors, 2); },
      [&](IAGImage& image) { return image.loadFile(path.c_str()) && image.captureFrom(*page, 0, 0); },
  };
  for (const auto& change : changes) {
    const auto image = gradient(*page, ColorModel::Indexed, 1, 300, 300);
    auto* const freezer = query<IAGImageFreezer>(image.get());
    EXPECT_TRUE(freezer->freeze() && page->drawImage(image.get(), 0, 0, 30, 30));
    EXPECT_GT(imageCopies().sizeBytes(), 0u);
    EXPECT_TRUE(change(*image));
    EXPECT_FALSE(freezer->isFrozen());
    EXPECT_EQ(imageCopies().sizeBytes(), 0u);
  }
  // A stencil is kept by its colour, and apart from the image that it is.
  const auto mask = gradient(*page, ColorModel::Indexed, 1, 256, 256);
  for (i32 y = 0; y < 256; ++y) std::fill_n(mask->row(y), mask->strideBytes(), u8{0xFF});
  EXPECT_TRUE(query<IAGImageFreezer>(mask.get())->freeze());
  for (const Color color : {rgb(9, 8, 7), rgb(1, 1, 1), rgb(9, 8, 7), Color{0}}) {
    page->clear();
    page->setFillColor(color);
    EXPECT_TRUE(page->drawImageMask(mask.get(), 0, 0, 16, 16));
    EXPECT_EQ(pixelOf(*page, 5, 5), color ? color : kWhite);
  }
  EXPECT_TRUE(page->drawImage(mask.get(), 0, 0, 16, 16));
  EXPECT_EQ(pixelOf(*page, 5, 5), rgb(10, 200, 30));
}

TEST(Image, KeepsABoundedSizeOfCopies) {
  const Ref<IAGDC> page = makePage(Through::Gdi);
  std::vector<Ref<IAGImage>> images;
  for (i32 i = 0; i < 40; ++i) {  // of 4 MiB each
    images.push_back(Ref<IAGImage>::adopt(page->createImage(1024, 1024, ColorModel::Cmyk, 0)));
    query<IAGImageFreezer>(images.back().get())->freeze();
    EXPECT_TRUE(page->drawImage(images.back().get(), 0, 0, 1024, 1024) &&
                page->drawImage(images.back().get(), 0, 0, 1024, 1024));
    ASSERT_LE(imageCopies().sizeBytes(), ImageCopies::kMostBytes);
  }
  images.clear();
  EXPECT_EQ(imageCopies().sizeBytes(), 0u);
}

TEST(Image, ConvertsToEachModel) {
  const Ref<IAGDC> page = makePage(Through::Gdi, 8, 8);
  for (const auto& format : kFormats) {
    const auto image = gradient(*page, format.model, format.bits, 37, 5);
    for (const ColorModel model : {ColorModel::Rgb, ColorModel::Argb, ColorModel::Gray}) {
      const auto result = Ref<IAGImage>::adopt(image->convertTo(model));
      ASSERT_TRUE(result && result->colorModel() == model && result->width() == 37 && result->height() == 5);
      int wrong = 0;
      for (i32 i = 0; i < 37 * 5; ++i) {
        Color from = 0;
        Color to = 0;
        image->pixelColor(i % 37, i / 37, &from);
        result->pixelColor(i % 37, i / 37, &to);
        if (model == ColorModel::Gray) {
          const u32 grey = (redOf(from) * 299 + greenOf(from) * 587 + blueOf(from) * 114 + 500) / 1000;
          from = rgb(grey, grey, grey);
        }
        wrong += from != to;
      }
      EXPECT_EQ(wrong, 0) << format.bits << " to " << static_cast<int>(model);
    }
    EXPECT_FALSE(Ref<IAGImage>::adopt(image->convertTo(ColorModel::Cmyk)));
    EXPECT_FALSE(Ref<IAGImage>::adopt(image->convertTo(ColorModel::Indexed)));
  }
  // Alpha is kept, not multiplied; and blends when it is drawn.
  for (const Through through : kBoth) {
    const Ref<IAGDC> target = makePage(through, 8, 8);
    const auto image = Ref<IAGImage>::adopt(target->createImage(2, 1, ColorModel::Argb, 0));
    const u8 pixels[8] = {100, 0, 200, 128, 10, 20, 30, 0};
    std::copy(pixels, pixels + 8, image->row(0));
    const auto copy = Ref<IAGImage>::adopt(image->convertTo(ColorModel::Argb));
    EXPECT_TRUE(std::equal(pixels, pixels + 8, copy->row(0)));
    EXPECT_TRUE(target->drawImagePixel(copy.get(), 1, 1));
    EXPECT_NEAR(static_cast<int>(redOf(pixelOf(*target, 1, 1))), 227, 1) << nameOf(through);
    EXPECT_NEAR(static_cast<int>(greenOf(pixelOf(*target, 1, 1))), 127, 1) << nameOf(through);
    EXPECT_EQ(pixelOf(*target, 2, 1), kWhite) << nameOf(through);
  }
}

TEST(Image, PaletteColorsThatAreNotSetAreOpaqueBlack) {
  const Ref<IAGDC> page = makePage(Through::Gdi, 8, 8);
  const Color colors[] = {argb(9, 8, 7, 6), kWhite, rgb(1, 2, 3)};
  for (const i32 bits : {1, 2, 4, 8}) {
    const auto image = Ref<IAGImage>::adopt(page->createImage(1, 1, ColorModel::Indexed, bits));
    const i32 size = 1 << bits;
    EXPECT_EQ(image->paletteSize(), size);
    EXPECT_EQ(image->palette()[size - 1], kWhite);  // a grey ramp at first
    for (const i32 count : {2, 1}) {                // fewer than before: the old ones go
      EXPECT_TRUE(image->setPalette(colors, count));
      for (i32 i = 0; i < size; ++i) EXPECT_EQ(image->palette()[i], i < count ? colors[i] : kBlack) << bits << ' ' << i;
    }
    EXPECT_FALSE(image->setPalette(colors, 0) || image->setPalette(colors, size + 1) || image->setPalette(nullptr, 1));
    EXPECT_EQ(image->palette()[0], colors[0]);
  }
}

// A matrix that is a turn already is the same under the setting that knows quarter turns alone.
TEST(Image, QuarterTurnsStayMirrored) {
  for (const Through through : kBoth) {
    for (i32 turn = 0; turn < 8; ++turn) {
      const Ref<IAGDC> pages[] = {makePage(through, 32, 32), makePage(through, 32, 32)};
      for (const Ref<IAGDC>& page : pages) {
        if (page == pages[1]) quality().imageRotation = static_cast<i32>(RotationMode::QuarterTurns);
        const auto image = gradient(*page, ColorModel::Rgb, 0);
        const Matrix onto = turnMatrix(static_cast<ImageTurn>(turn)).then({15, 0, 0, 15, 5, 5});
        EXPECT_TRUE(page->drawImageTransformed(image.get(), onto));
      }
      quality().imageRotation = static_cast<i32>(RotationMode::Best);
      int different = 0;
      for (i32 i = 0; i < 32 * 32; ++i) {
        different += pixelOf(*pages[0], i % 32, i / 32) != pixelOf(*pages[1], i % 32, i / 32);
      }
      EXPECT_EQ(different, 0) << nameOf(through) << ", turn " << turn;
    }
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

// A file that is being made stands beside its place until it is whole; nothing of the user's is in its way.
TEST(Image, SavingLeavesOtherFilesAlone) {
  const OwnFolder folder;
  const std::filesystem::path kept[] = {folder.file(L"x.png.part"), folder.file(L"x.png.3.part")};
  for (const auto& path : kept) std::ofstream(path) << "mine";
  std::filesystem::create_directory(folder.file(L"x.png.2.part"));
  std::filesystem::create_directory(folder.file(L"y.png"));
  std::ofstream(folder.file(L"y.png.part")) << "mine";
  const auto image = gradient(*makePage(Through::Gdi, 8, 8), ColorModel::Rgb, 24);
  EXPECT_TRUE(image->saveFile(folder.file(L"x.png").c_str(), ImageFile::Png));
  EXPECT_FALSE(image->saveFile(folder.file(L"y.png").c_str(), ImageFile::Png)) << "a folder";
  EXPECT_EQ(bytesOf(folder.file(L"x.png")).substr(1, 3), "PNG");
  for (const auto& path : {kept[0], kept[1], folder.file(L"y.png.part")}) EXPECT_EQ(bytesOf(path), "mine") << path;
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 6) << "nothing is left over";
}

TEST(Image, CaptureCopiesWhatIsThere) {
  for (const Through through : kBoth) {
    const Ref<IAGDC> page = makePage(through, 8, 8);
    page->setPixel(1, 2, rgb(5, 6, 7));
    page->setOrigin(3, 3);
    const auto image = Ref<IAGImage>::adopt(page->createImage(8, 8, ColorModel::Argb, 0));
    EXPECT_TRUE(image->captureFrom(*page, -1, 0));
    EXPECT_EQ(page->origin().x, 3) << nameOf(through);
    EXPECT_EQ(page->origin().y, 3) << nameOf(through);
    EXPECT_TRUE(page->setPixel(1, 1, kBlack));
    EXPECT_EQ(pixelOf(*page, 1, 1), kBlack) << nameOf(through);
    Color color;
    EXPECT_TRUE(image->pixelColor(2, 2, &color));
    EXPECT_EQ(color, rgb(5, 6, 7));
    EXPECT_TRUE(image->pixelColor(0, 0, &color));
    EXPECT_EQ(color, 0u);  // the page begins at 1
    page->setOrigin(0, 0);
    EXPECT_EQ(pixelOf(*page, 4, 4), kBlack) << nameOf(through);
  }
}

}  // namespace
}  // namespace corvix
