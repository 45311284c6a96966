// Draws scenes through IAGDC:  corvix-pictures SCENES FOLDER
//                               corvix-pictures --glyphs COUNT SHEET.png FONT...
//
// FOLDER gets NAME.gdi.png, NAME.gdiplus.png and NAME.smooth.png, and none for a kind that refuses the scene. The
// smooth context draws each by several threads, too: 1 when a pixel differs.
#include "core/baselib/objects/Ref.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "graphics/Blending.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/Shading.h"
#include "graphics/Stencils.h"
#include "graphics/Tiles.h"
#include "graphics/fonts/FontFinder.h"
#include "graphics/fonts/FontProgram.h"
#include "graphics/text/Text.h"
#include "shell/Shell.h"
#include "tests/pictures/Scene.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <tuple>

namespace {

using namespace corvix;
using namespace pictures;

struct Font {
  std::string bytes;
  Ref<IFMFont> font;
};

IPluginManager& manager() { return *IShell::getInstance()->pluginManager(); }

IFMFont* fontOf(const std::string& path) {
  static std::map<std::string, Font> fonts;
  Font& font = fonts[path];
  if (!font.font) {
    std::ifstream file(path, std::ios::binary);
    font.bytes.assign(std::istreambuf_iterator<char>(file), {});
    const auto machine = createObject<IFMFontChooser>(manager(), L"IFMFontMachine.Instance");
    const auto stream = make<BMemoryInputStream>(font.bytes.data(), static_cast<u32>(font.bytes.size()),
                                                 BMemoryInputStream::Bytes::Borrow);
    FontRequest request;
    request.program = stream.get();
    font.font = Ref<IFMFont>::adopt(machine->createFontFor(request));
  }
  return font.font.get();
}

Matrix toMatrix(const Six& six) { return {six.a, six.b, six.c, six.d, six.e, six.f}; }

// Kept, as each scene is drawn seven times.
const std::vector<Color>& pixelsOf(const std::string& kind, int width, int height) {
  static std::map<std::tuple<std::string, int, int>, std::vector<Color>> known;
  std::vector<Color>& pixels = known[{kind, width, height}];
  if (pixels.empty()) {
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) pixels.push_back(pixelOf(kind, width, height, x, y));
  }
  return pixels;
}

class Drawing final : public Canvas {
 public:
  explicit Drawing(IAGDC& page)
      : page_(page), shading_(query<IAGShading>(&page)), blending_(query<IAGBlending>(&page)) {}

  bool apply(const std::string& name, const Numbers& n) override {
    const auto at = [&](std::size_t i) { return n.size() > i ? n[i] : 0; };
    const auto whole = static_cast<i32>(at(0));
    if (name == "fill") return page_.setFillColor(static_cast<Color>(at(0)));
    if (name == "stroke") return page_.setStrokeColor(static_cast<Color>(at(0)));
    if (name == "width") return page_.setLineWidth(at(0));
    if (name == "cap") return page_.setLineCap(whole);
    if (name == "join") return page_.setLineJoin(whole);
    if (name == "miter") return page_.setMiterLimit(at(0));
    if (name == "dash") return page_.setDash(n.data() + 1, static_cast<i32>(n.size()) - 1, at(0));
    if (name == "rule") return page_.setFillRule(whole ? FillRule::Winding : FillRule::EvenOdd);
    if (name == "transform") return page_.setTransform({n[0], n[1], n[2], n[3], n[4], n[5]});
    if (name == "interpolate") return page_.setInterpolation(whole), true;
    if (name == "begin") return page_.beginPath();
    if (name == "m") return page_.moveTo(n[0], n[1]);
    if (name == "l") return page_.lineTo(n[0], n[1]);
    if (name == "c") return page_.curveTo(n[0], n[1], n[2], n[3], n[4], n[5]);
    if (name == "z") return page_.closePath();
    if (name == "r") return page_.rectangle(n[0], n[1], n[2], n[3]);
    if (name == "rect") return page_.fillRect(n[0], n[1], n[2], n[3]);
    if (name == "paint") return page_.drawPath(static_cast<PathPaint>(whole)) && page_.endPath();
    if (name == "clip") return page_.clipPath() && page_.endPath();
    if (name == "clipstroke") return page_.clipStroke() && page_.endPath();
    if (name == "save") return page_.saveClip();
    if (name == "restore") return page_.restoreClip();
    if (name == "all") return shading_ && shading_->paintAll();
    if (!blending_) return false;
    if (name == "opacity") return blending_->setOpacity(at(0));
    if (name == "blend") return blending_->setBlendMode(static_cast<BlendMode>(whole));
    if (name == "group") return blending_->beginGroup();
    if (name == "endgroup") return blending_->endGroup();
    if (name == "endmask") return blending_->endGroupAsMask(static_cast<MaskBy>(whole), kBlack);
    return name == "nomask" && blending_->setSoftMask(nullptr, {}, MaskBy::Alpha);
  }

  bool image(const std::string& kind, int width, int height, const Six& place) override {
    return page_.drawImageTransformed(made(kind, width, height).get(), toMatrix(place));
  }
  bool stencil(int width, int height, const Six& place) override {
    const auto image = Ref<IAGImage>::adopt(page_.createImage(width, height, ColorModel::Indexed, 1));
    for (int y = 0; image && y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        if (pixelOf("bits", width, height, x, y) == 0xFFFFFFFF) image->row(y)[x / 8] |= static_cast<u8>(128 >> x % 8);
      }
    }
    auto* const stencils = query<IAGStencils>(&page_);
    return image && stencils && stencils->drawMaskTransformed(image.get(), toMatrix(place));
  }
  bool tile(const std::string& kind, int width, int height, const Six& place) override {
    return shading_ && shading_->setTilePaint(PaintUse::Fill, made(kind, width, height).get(), toMatrix(place));
  }
  bool mask(const std::string& kind, int width, int height, const Six& place) override {
    return blending_ && blending_->setSoftMask(made(kind, width, height).get(), toMatrix(place), MaskBy::Luminosity);
  }
  bool gradient(bool isForStrokes, const Numbers& p, unsigned extend, const std::vector<Stop>& stops) override {
    std::vector<ColorStop> own;
    for (const Stop& stop : stops) own.push_back({stop.offset, stop.color});
    const auto use = isForStrokes ? PaintUse::Stroke : PaintUse::Fill;
    const auto count = static_cast<i32>(own.size());
    if (!shading_) return false;
    return p.size() == 4
               ? shading_->setAxialPaint(use, {p[0], p[1]}, {p[2], p[3]}, own.data(), count, extend)
               : shading_->setRadialPaint(use, {p[0], p[1]}, p[2], {p[3], p[4]}, p[5], own.data(), count, extend);
  }
  bool text(const std::string& font, double size, const Six& place, const std::string& ascii, bool isClip) override {
    const std::wstring wide(ascii.begin(), ascii.end());
    IFMFont* const found = fontOf(font);
    const auto count = static_cast<i32>(wide.size());
    return found && (isClip ? clipText(page_, *found, size, toMatrix(place), wide.c_str(), count)
                            : drawText(page_, *found, size, toMatrix(place), wide.c_str(), count));
  }

 private:
  Ref<IAGImage> made(const std::string& kind, int width, int height) {
    auto image = Ref<IAGImage>::adopt(page_.createImage(width, height, ColorModel::Argb, 0));
    auto pixel = pixelsOf(kind, width, height).begin();
    for (int y = 0; image && y < height; ++y, pixel += width)
      std::copy_n(pixel, width, reinterpret_cast<Color*>(image->row(y)));
    return image;
  }

  IAGDC& page_;
  IAGShading* shading_;
  IAGBlending* blending_;
};

struct Kind {
  const char* name;
  const wchar_t* creator;
  u32 required;
};
constexpr Kind kKinds[] = {
    {"gdi", L"AGDC.Memory", 0}, {"gdiplus", L"AGDC.Memory", capability::kGdiPlus}, {"smooth", L"AGDC.SmoothMemory", 0}};

bool save(IAGImage* image, const std::string& path) {
  const std::wstring wide(path.begin(), path.end());
  return image && image->saveFile(wide.c_str(), ImageFile::Png);
}

Ref<IAGImage> pictureOf(IAGDC& page, i32 width, i32 height) {
  auto image = Ref<IAGImage>::adopt(page.createImage(width, height, ColorModel::Rgb, 0));
  if (!image || !image->captureFrom(page, 0, 0)) image.reset();
  return image;
}

// Null when the scene is refused. `threads`: 0 when none were asked for.
Ref<IAGImage> drawn(const Scene& scene, const Kind& kind, i32 threads) {
  const auto creator = createObject<IAGDCCreator>(manager(), kind.creator);
  const auto page = Ref<IAGDC>::adopt(creator ? creator->create(kind.required, 0, nullptr, kWidth, kHeight) : nullptr);
  if (!page) return {};
  page->setSmoothing(255);
  auto* const tiles = query<IAGTiles>(page.get());
  Drawing drawing(*page);
  const bool isDrawn = (!threads || tiles->beginTiles(threads)) && draw(scene.lines, drawing) &&
                       (!threads || tiles->endTiles()) && page->resetClip();
  return isDrawn ? pictureOf(*page, kWidth, kHeight) : Ref<IAGImage>();
}

// By several threads the pixels are those of one.
bool isSameByThreads(const Scene& scene, const Kind& kind, IAGImage& expected) {
  for (const i32 threads : {1, 2, 3, 8}) {
    const Ref<IAGImage> picture = drawn(scene, kind, threads);
    bool isSame = static_cast<bool>(picture);
    for (i32 y = 0; isSame && y < kHeight; ++y)
      isSame = std::equal(expected.row(y), expected.row(y) + std::ptrdiff_t{3} * kWidth, picture->row(y));
    if (isSame) continue;
    std::printf("%s: not the same by %d threads\n", scene.name.c_str(), static_cast<int>(threads));
    return false;
  }
  return true;
}

// A contact sheet of the first glyphs of each font, by the smooth context; a free row between fonts.
int drawGlyphSheet(u32 most, const std::string& sheet, const std::vector<std::string>& paths) {
  constexpr u32 kAcross = 50;
  constexpr i32 kCell = 22;
  std::vector<u32> counts;
  i32 rows = 0;
  for (const std::string& path : paths) {
    auto* const program = query<IFMFontProgram>(fontOf(path));
    if (!program) return std::printf("%s: no font\n", path.c_str()), 1;
    counts.push_back(std::min(most, program->glyphCount()));
    rows += static_cast<i32>((counts.back() + kAcross - 1) / kAcross) + (rows ? 1 : 0);
  }
  const auto creator = createObject<IAGDCCreator>(manager(), L"AGDC.SmoothMemory");
  const auto page = Ref<IAGDC>::adopt(creator->create(0, 0, nullptr, kAcross * kCell, rows * kCell));
  page->setFillColor(kBlack);
  u32 refused = 0;
  i32 top = 0;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    for (u32 glyph = 0; glyph < counts[i]; ++glyph) {
      const GlyphPlace place = {glyph, 0, 0};
      const Matrix at = Matrix::translation(static_cast<i32>(glyph % kAcross) * kCell + 3.0,
                                            (top + static_cast<i32>(glyph / kAcross)) * kCell + 16.0);
      if (!drawGlyphs(*page, *fontOf(paths[i]), 15, at, &place, 1)) ++refused;
    }
    std::printf("%s: %u glyphs, %u refused by now\n", paths[i].c_str(), counts[i], refused);
    top += static_cast<i32>((counts[i] + kAcross - 1) / kAcross) + 1;
  }
  return save(pictureOf(*page, kAcross * kCell, rows * kCell).get(), sheet) && !refused ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  if (count > 4 && std::string(arguments[1]) == "--glyphs") {
    return drawGlyphSheet(static_cast<u32>(std::strtoul(arguments[2], nullptr, 10)), arguments[3],
                          {arguments + 4, arguments + count});
  }
  if (count != 3) return 2;
  std::ifstream file(arguments[1]);
  manager();
  for (const Scene& scene : read(file)) {
    for (const Kind& kind : kKinds) {
      const Ref<IAGImage> picture = drawn(scene, kind, 0);
      if (!picture) {
        std::printf("%s: refused by %s\n", scene.name.c_str(), kind.name);
        continue;
      }
      const std::string path = std::string(arguments[2]) + "/" + scene.name + "." + kind.name + ".png";
      if (!save(picture.get(), path)) return 1;
      if (&kind == std::end(kKinds) - 1 && !isSameByThreads(scene, kind, *picture)) return 1;
    }
  }
  return 0;
}
