#include "examples/host/PageCells.h"

#include "core/baselib/objects/Ref.h"
#include "graphics/Blending.h"
#include "graphics/ImageFreezer.h"
#include "graphics/Shading.h"
#include "graphics/text/Text.h"

#include <algorithm>
#include <iterator>

namespace host {

using namespace corvix;

namespace {

constexpr wchar_t kPangram[] = L"Sphinx \x2014 \x03A9 \x4E2D";
constexpr i32 kPangramLength = static_cast<i32>(std::size(kPangram)) - 1;

constexpr Color kInk = rgb(30, 50, 90);
constexpr Color kWarm = rgb(214, 84, 44);
constexpr Color kCool = rgb(40, 130, 170);

bool lineWidths(IAGDC& page, const Box& box, const PageTools&) {
  bool isDrawn = page.setStrokeColor(kInk);
  const double widths[] = {0, 1, 2, 4, 7, 10};
  double y = box.top + 6;
  for (const double width : widths) {
    y += width / 2;
    isDrawn = page.setLineWidth(width) && page.line(box.left + 4, y, box.right - 4, y) && isDrawn;
    y += width / 2 + 9;
  }
  return isDrawn;
}

bool capsAndJoins(IAGDC& page, const Box& box, const PageTools&) {
  bool isDrawn = page.setStrokeColor(kCool) && page.setLineWidth(11);
  double x = box.left + 12;
  for (const i32 kind : {0, 1, 2}) {
    const Point corner[] = {{x, box.bottom - 10}, {x + 15, box.top + 36}, {x + 30, box.bottom - 10}};
    isDrawn = page.setLineCap(kind) && page.setLineJoin(kind) && page.strokePolyline(corner, 3) && isDrawn;
    x += 46;
  }
  return isDrawn;
}

bool dashes(IAGDC& page, const Box& box, const PageTools&) {
  const std::vector<double> patterns[] = {{12, 6}, {3, 5}, {16, 4, 4, 4}, {1, 9}};
  bool isDrawn = page.setStrokeColor(kWarm) && page.setLineWidth(4);
  double y = box.top + 10;
  for (const auto& pattern : patterns) {
    isDrawn = page.setLineCap(pattern[0] == 1 ? kCapRound : kCapFlat) &&
              page.setDash(pattern.data(), static_cast<i32>(pattern.size()), 0) && page.moveTo(box.left + 6, y) &&
              page.curveTo(box.left + 50, y - 16, box.left + 90, y + 16, box.right - 6, y) && isDrawn;
    y += 22;
  }
  return isDrawn;
}

bool fillRules(IAGDC& page, const Box& box, const PageTools&) {
  bool isDrawn = page.setStrokeColor(kInk) && page.setLineWidth(1.5) && page.setFillColor(rgb(250, 200, 70));
  const double radius = 35;
  double middle = box.left + 36;
  for (const FillRule rule : {FillRule::EvenOdd, FillRule::Winding}) {
    isDrawn = page.setFillRule(rule) && page.beginPath() && isDrawn;
    for (int i = 0; i < 5; ++i) {
      const double angle = (i * 4 - 2.5) * std::acos(-1.0) / 5;
      const double x = middle + radius * std::cos(angle);
      const double y = (box.top + box.bottom) / 2 + radius * std::sin(angle);
      isDrawn = (i ? page.lineTo(x, y) : page.moveTo(x, y)) && isDrawn;
    }
    isDrawn = page.closePath() && page.drawPath(PathPaint::FillAndStroke) && page.endPath() && isDrawn;
    middle = box.right - 36;
  }
  return isDrawn;
}

bool clipping(IAGDC& page, const Box& box, const PageTools&) {
  const Point middle = {(box.left + box.right) / 2, (box.top + box.bottom) / 2};
  const double r = 40;
  const double k = r * 0.5522847498;
  bool isDrawn = page.saveClip() && page.beginPath() && page.moveTo(middle.x + r, middle.y) &&
                 page.curveTo(middle.x + r, middle.y + k, middle.x + k, middle.y + r, middle.x, middle.y + r) &&
                 page.curveTo(middle.x - k, middle.y + r, middle.x - r, middle.y + k, middle.x - r, middle.y) &&
                 page.curveTo(middle.x - r, middle.y - k, middle.x - k, middle.y - r, middle.x, middle.y - r) &&
                 page.curveTo(middle.x + k, middle.y - r, middle.x + r, middle.y - k, middle.x + r, middle.y) &&
                 page.closePath() && page.clipPath() && page.endPath() &&
                 page.excludeRect(middle.x - 8, middle.y - 8, 16, 16) && page.setLineWidth(5);
  for (int i = -12; i < 13 && isDrawn; ++i) {
    page.setStrokeColor(i % 2 ? kWarm : kCool);
    isDrawn = page.line(middle.x + 10 * i - 1e9, middle.y - 1e9, middle.x + 10 * i + 1e9, middle.y + 1e9);
  }
  return page.restoreClip() && isDrawn;
}

// A picture of one's own for every colour model: a sun over water.
Ref<IAGImage> picture(IAGDC& page, ColorModel model, i32 bits) {
  constexpr i32 kSide = 32;
  auto image = Ref<IAGImage>::adopt(page.createImage(kSide, kSide, model, bits));
  if (!image) return image;
  const Color palette[] = {rgb(20, 60, 120), rgb(90, 160, 210), rgb(250, 190, 60), rgb(230, 110, 40)};
  if (model == ColorModel::Indexed) image->setPalette(palette, bits == 1 ? 2 : 4);
  for (i32 y = 0; y < kSide; ++y) {
    u8* const row = image->row(y);
    for (i32 x = 0; x < kSide; ++x) {
      const double d = std::hypot(x - 15.5, y - 15.5);
      const u32 place = y > 22 ? 0 : d < 7 ? 2 : d < 10 ? 3 : 1;
      const Color color = palette[place];
      if (model == ColorModel::Indexed) {
        const u32 value = bits == 1 ? place >> 1 : place;
        row[x * bits / 8] = static_cast<u8>(row[x * bits / 8] | value << (8 - bits - x * bits % 8));
      } else if (model == ColorModel::Gray) {
        row[x] = static_cast<u8>((redOf(color) + greenOf(color) + blueOf(color)) / 3);
      } else if (model == ColorModel::Cmyk) {
        row[4 * x] = static_cast<u8>(255 - redOf(color));
        row[4 * x + 1] = static_cast<u8>(255 - greenOf(color));
        row[4 * x + 2] = static_cast<u8>(255 - blueOf(color));
        row[4 * x + 3] = static_cast<u8>(y * 3);
      } else {
        const i32 size = model == ColorModel::Argb ? 4 : 3;
        row[size * x] = static_cast<u8>(blueOf(color));
        row[size * x + 1] = static_cast<u8>(greenOf(color));
        row[size * x + 2] = static_cast<u8>(redOf(color));
        if (size == 4) row[4 * x + 3] = static_cast<u8>(std::clamp(255 - 12 * (d - 6), 0.0, 255.0));
      }
    }
  }
  if (auto* const freezer = query<IAGImageFreezer>(image.get())) freezer->freeze();
  return image;
}

bool colorModels(IAGDC& page, const Box& box, const PageTools&) {
  const struct {
    ColorModel model;
    i32 bits;
  } kinds[] = {{ColorModel::Indexed, 1}, {ColorModel::Indexed, 2}, {ColorModel::Indexed, 4}, {ColorModel::Gray, 8},
               {ColorModel::Rgb, 24},    {ColorModel::Argb, 32},   {ColorModel::Cmyk, 32},   {ColorModel::Indexed, 8}};
  bool isDrawn = true;
  for (int i = 0; i < 8; ++i) {
    const auto image = picture(page, kinds[i].model, kinds[i].bits);
    isDrawn = image &&
              page.drawImagePixel(image.get(), static_cast<i32>(box.left) + i % 4 * 37,
                                  static_cast<i32>(box.top) + 8 + i / 4 * 42) &&
              isDrawn;
  }
  return isDrawn;
}

bool turnedImages(IAGDC& page, const Box& box, const PageTools&) {
  const auto image = picture(page, ColorModel::Rgb, 0);
  bool isDrawn = static_cast<bool>(image);
  const double angles[] = {0.35, 1.1, 2.6};
  double x = box.left + 30;
  for (const double angle : angles) {
    const Matrix unit = Matrix::translation(-0.5, -0.5)
                            .then(Matrix::scaling(38, 38))
                            .then(Matrix::rotation(angle))
                            .then(Matrix::translation(x, (box.top + box.bottom) / 2));
    isDrawn = page.drawImageTransformed(image.get(), unit) && isDrawn;
    x += 46;
  }
  return isDrawn;
}

bool imageEffects(IAGDC& page, const Box& box, const PageTools&) {
  const auto image = picture(page, ColorModel::Rgb, 0);
  const auto mask = picture(page, ColorModel::Indexed, 1);
  const float grey[25] = {0.3F, 0.3F, 0.3F, 0, 0, 0.6F, 0.6F, 0.6F, 0, 0, 0.1F, 0.1F, 0.1F,
                          0,    0,    0,    0, 0, 1,    0,    0,    0, 0, 0,    1};
  const ColorChange change = {rgb(250, 190, 60), rgb(230, 60, 140)};
  const auto x = static_cast<i32>(box.left);
  const auto y = static_cast<i32>(box.top) + 4;
  return image && mask && page.setFillColor(kWarm) && page.drawImageMatrix(image.get(), x, y, 44, 44, grey) &&
         page.drawImageRemapped(image.get(), x + 50, y, 44, 44, &change, 1) &&
         page.drawImageMask(mask.get(), x + 100, y, 44, 44) &&
         page.drawImageTurned(image.get(), x, y + 50, 44, 44, ImageTurn::Turn90) &&
         page.drawImageTurned(image.get(), x + 50, y + 50, 44, 44, ImageTurn::Turn180FlipX) &&
         page.drawImageOffscreen(image.get(), x + 100, y + 50, 44, 44);
}

bool transparency(IAGDC& page, const Box& box, const PageTools&) {
  bool isDrawn = page.setFillColor(rgb(220, 226, 232)) && page.fillRect(box.left, box.top + 34, 144, 26);
  const Color colors[] = {argb(130, 220, 40, 40), argb(130, 40, 160, 60), argb(130, 40, 80, 220)};
  double x = box.left + 8;
  for (const Color color : colors) {
    isDrawn = page.setFillColor(color) && page.fillRect(x, box.top + 8, 56, 74) && isDrawn;
    x += 36;
  }
  return isDrawn;
}

bool transforms(IAGDC& page, const Box& box, const PageTools&) {
  bool isDrawn = page.setStrokeColor(kInk) && page.setLineWidth(2);
  for (int i = 0; i < 9 && isDrawn; ++i) {
    isDrawn =
        page.setTransform(Matrix::rotation(i * 0.17)
                              .then(Matrix::scaling(1.2, 0.8))
                              .then(Matrix::translation((box.left + box.right) / 2, (box.top + box.bottom) / 2))) &&
        page.drawRectangle(-36, -30, 72, 60);
  }
  page.resetTransform();
  return isDrawn;
}

bool pixelsAndFrames(IAGDC& page, const Box& box, const PageTools&) {
  const auto x = static_cast<i32>(box.left);
  const auto y = static_cast<i32>(box.top);
  bool isDrawn = true;
  for (i32 i = 0; i < 40; ++i) {
    for (i32 j = 0; j < 40; ++j) {
      isDrawn =
          page.setPixel(x + 4 + i, y + 6 + j, rgb(static_cast<u32>(6 * i), static_cast<u32>(6 * j), 128)) && isDrawn;
    }
  }
  page.setFillColor(rgb(190, 215, 235));
  return page.fillRect(x + 56, y + 6, 86, 76) && page.xorRect({x + 62, y + 12, x + 110, y + 60}) &&
         page.focusRect({x + 84, y + 34, x + 136, y + 76}) && page.dottedRow(x + 4, x + 45, y + 54, kBlack, kWarm) &&
         page.dottedColumn(x + 24, y + 58, y + 84, kBlack, kCool) && isDrawn;
}

bool textSizes(IAGDC& page, const Box& box, const PageTools& tools) {
  bool isDrawn = tools.font && page.setFillColor(kInk);
  double y = box.top + 2;
  for (const double size : {7, 9, 12, 16, 22}) {
    y += size * 1.15;
    isDrawn =
        isDrawn && drawText(page, *tools.font, size, Matrix::translation(box.left + 4, y), kPangram, kPangramLength);
  }
  return isDrawn;
}

bool turnedText(IAGDC& page, const Box& box, const PageTools& tools) {
  const Matrix middle = Matrix::translation((box.left + box.right) / 2, (box.top + box.bottom) / 2);
  bool isDrawn = tools.font != nullptr;
  for (int i = 0; i < 8 && isDrawn; ++i) {
    const double angle = i * std::acos(-1.0) / 4;
    isDrawn = page.setFillColor(i % 2 ? kCool : kWarm) &&
              drawText(page, *tools.font, 13, Matrix::translation(14, 4).then(Matrix::rotation(angle)).then(middle),
                       L"Corvix", 6);
  }
  return isDrawn;
}

bool clippedByText(IAGDC& page, const Box& box, const PageTools& tools) {
  if (!tools.font || !page.saveClip()) return false;
  bool isDrawn = clipText(page, *tools.font, 62, Matrix::translation(box.left, box.bottom - 30), L"Text", 4);
  for (double x = box.left; x < box.right && isDrawn; x += 9) {
    isDrawn =
        page.setFillColor(rgb(static_cast<u32>(1.6 * (x - box.left)), 90, 170)) && page.fillRect(x, box.top, 9, 110);
  }
  return page.restoreClip() && isDrawn;
}

bool gradients(IAGDC& page, const Box& box, const PageTools&) {
  auto* const shading = query<IAGShading>(&page);
  if (!shading) return false;
  const ColorStop sunset[] = {{0, kInk}, {0.5, kWarm}, {1, rgb(250, 220, 90)}};
  const ColorStop ball[] = {{0, kWhite}, {0.4, kCool}, {1, rgb(10, 40, 60)}};
  return shading->setAxialPaint(PaintUse::Fill, {box.left, box.top}, {box.left + 60, box.top + 40}, sunset, 3,
                                kExtendStart | kExtendEnd) &&
         page.fillRect(box.left + 4, box.top + 6, 62, 80) &&
         shading->setRadialPaint(PaintUse::Fill, {box.left + 96, box.top + 34}, 0, {box.left + 106, box.top + 46}, 38,
                                 ball, 3, 0) &&
         page.fillRect(box.left + 66, box.top + 6, 80, 82) && page.setFillColor(kInk);
}

bool blendModes(IAGDC& page, const Box& box, const PageTools&) {
  auto* const blending = query<IAGBlending>(&page);
  if (!blending) return false;
  const BlendMode modes[] = {BlendMode::Multiply, BlendMode::Screen, BlendMode::Difference};
  bool isDrawn = page.setFillColor(rgb(250, 190, 60)) && page.fillRect(box.left + 4, box.top + 6, 140, 34) &&
                 page.setFillColor(kInk) && page.fillRect(box.left + 4, box.top + 40, 140, 46) &&
                 page.setFillColor(kCool);
  double x = box.left + 26;
  for (const BlendMode mode : modes) {
    isDrawn = blending->setBlendMode(mode) && page.fillEllipse(x, box.top + 46, 21, 32) && isDrawn;
    x += 48;
  }
  return blending->setBlendMode(BlendMode::Normal) && isDrawn;
}

bool groupsAndMasks(IAGDC& page, const Box& box, const PageTools&) {
  auto* const blending = query<IAGBlending>(&page);
  auto* const shading = query<IAGShading>(&page);
  if (!blending || !shading) return false;
  const ColorStop fading[] = {{0, kWhite}, {1, kBlack}};
  bool isDrawn = blending->beginGroup() &&
                 shading->setAxialPaint(PaintUse::Fill, {box.left, 0}, {box.left + 140, 0}, fading, 2,
                                        kExtendStart | kExtendEnd) &&
                 shading->paintAll() && blending->endGroupAsMask(MaskBy::Luminosity, kBlack) &&
                 blending->beginGroup() && page.setFillColor(kWarm) &&
                 page.fillRect(box.left + 6, box.top + 10, 80, 60) && page.setFillColor(kCool) &&
                 page.fillEllipse(box.left + 96, box.top + 50, 46, 34);
  return blending->endGroup() && blending->setSoftMask(nullptr, {}, MaskBy::Alpha) && isDrawn;
}

bool plugInPart(IAGDC& page, const Box& box, const PageTools& tools) {
  return tools.part && tools.part->drawPart(page, box);
}

}  // namespace

const std::vector<Cell>& pageCells() {
  static const std::vector<Cell> cells = {{L"Line widths", lineWidths},
                                          {L"Caps and joins", capsAndJoins},
                                          {L"Dashes", dashes},
                                          {L"Fill rules", fillRules},
                                          {L"Clipping", clipping},
                                          {L"Colour models", colorModels},
                                          {L"Turned images", turnedImages},
                                          {L"Image effects", imageEffects},
                                          {L"Transparency", transparency},
                                          {L"Transforms", transforms},
                                          {L"Pixels and frames", pixelsAndFrames},
                                          {L"Text", textSizes},
                                          {L"Turned text", turnedText},
                                          {L"Clipped by text", clippedByText},
                                          {L"Gradients", gradients},
                                          {L"Blend modes", blendModes},
                                          {L"Groups and soft masks", groupsAndMasks},
                                          {L"Drawn by a plug-in", plugInPart}};
  return cells;
}

}  // namespace host
