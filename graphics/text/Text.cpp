#include "graphics/text/Text.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/ForeignCall.h"
#include "graphics/fonts/FMFontMachine_p.h"
#include "graphics/fonts/FakeFonts_p.h"
#include "graphics/fonts/FallbackFonts_p.h"
#include "graphics/fonts/FontKeeper.h"
#include "graphics/fonts/FontSettings_p.h"
#include "graphics/fonts/GlyphCache_p.h"
#include "graphics/text/Characters_p.h"
#include "graphics/text/TextTarget.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace corvix {

namespace {

constexpr double kLargestRead = 96;         // pixels; larger glyphs are drawn as outlines
constexpr i32 kWidestRun = 2048;            // pixels of one image
constexpr u32 kReplacement = 0xFFFD;        // for half a surrogate pair
constexpr std::size_t kShapePoints = 4096;  // after so many a shape is filled
constexpr i32 kLargestMask = 1 << 13;       // pixels, and how far from its place it may begin

// One glyph of a text, whichever font it is from.
struct Placed {
  IFMFontSource* source;
  u32 font;  // its number in the cache
  u32 glyph;
  double x;
  double y;
};

bool isSurrogate(wchar_t unit, u32 kind) noexcept { return (u32{static_cast<u16>(unit)} & 0xFC00u) == kind; }

// The next character of UTF-16; moves `at` behind it.
u32 nextCodePoint(const wchar_t* text, i32 count, i32& at) noexcept {
  const wchar_t unit = text[at++];
  if (isSurrogate(unit, 0xD800) && at < count && isSurrogate(text[at], 0xDC00)) {
    return 0x10000 + ((u32{static_cast<u16>(unit)} & 0x3FF) << 10) + (u32{static_cast<u16>(text[at++])} & 0x3FF);
  }
  return isSurrogate(unit, 0xD800) || isSurrogate(unit, 0xDC00) ? kReplacement : static_cast<u16>(unit);
}

// What drawing leaves with a font of another module.
class KeptFallbacks final : public BSmartObject, public FallbackFonts {
  CORVIX_IDENTITY(KeptFallbacks, 0x23F37A25, 0x277349E3, 0x6B41FB30, 0xD78F2464, BSmartObject, FallbackFonts)
};

// Null when the font keeps none.
FallbackFonts* fallbackOf(IFMFont& font) {
  if (auto* const own = corvix::query<FallbackFonts>(&font)) return own;
  auto* const keeper = corvix::query<IFMFontKeeper>(&font);
  if (!keeper) return nullptr;
  if (auto* const kept = corvix::query<FallbackFonts>(keeper->kept())) return kept;
  keeper->keep(make<KeptFallbacks>().get());
  return corvix::query<FallbackFonts>(keeper->kept());
}

// The glyphs of a text along its baseline; their fonts stay with the first.
class Line {
 public:
  Line(IFMFont& font, double size) : font_(font), fallback_(fallbackOf(font)), size_(size) {
    if (!fallback_) fallback_ = &own_.emplace();
    source_ = corvix::query<IFMFontSource>(&font);
  }

  bool canDraw() const noexcept { return source_ != nullptr; }

  void add(const wchar_t* text, i32 count) {
    glyphs_.reserve(static_cast<std::size_t>(count));
    for (i32 at = 0; at < count;) {
      const u32 codePoint = nextCodePoint(text, count, at);
      if (isLeftOut(codePoint)) continue;
      if (isMark(codePoint) && base_) {
        addMark(codePoint);
      } else {
        addGlyph(codePoint);
        base_ = codePoint;
        baseAt_ = glyphs_.size() - 1;
      }
    }
  }

  void addAt(const GlyphPlace& place) {
    glyphs_.push_back({source_, fallback_->number, place.glyph, place.x, place.y});
  }

  double width() const noexcept { return x_; }
  const std::vector<Placed>& glyphs() const noexcept { return glyphs_; }

 private:
  // At the end of the line so far, which does not move.
  const Placed& place(u32 codePoint) {
    IFMFontSource* source = source_;
    u32 number = fallback_->number;
    u32 glyph = source->glyphOf(codePoint);
    if (glyph == 0) glyph = otherGlyph(codePoint, source, number);
    glyphs_.push_back({source, number, glyph, x_, 0});
    return glyphs_.back();
  }
  void addGlyph(u32 codePoint) {
    const Placed& placed = place(codePoint);
    x_ += placed.source->advance(placed.glyph) * size_;
  }

  // As one character with the one before it, if the font has such; else upon it. Glyphs of marks that have a width of
  // their own are put over its middle, the others stand where the font's author meant them to.
  void addMark(u32 codePoint) {
    const u32 one = baseAt_ + 1 == glyphs_.size() ? composed(base_, codePoint) : 0;
    if (one && source_->glyphOf(one)) {
      x_ = glyphs_.back().x;
      glyphs_.pop_back();
      addGlyph(one);
      base_ = one;
      return;
    }
    const double markWidth = [&] {
      const Placed& mark = place(codePoint);
      return mark.source->advance(mark.glyph) * size_;
    }();
    const double baseX = glyphs_[baseAt_].x;
    if (markWidth > 0) glyphs_.back().x = baseX + (x_ - baseX - markWidth) / 2;
  }

  // From a font that came to help before, or another one.
  u32 otherGlyph(u32 codePoint, IFMFontSource*& source, u32& number) {
    const auto take = [&](const FallbackFonts::Row& row, u32 glyph) {
      source = row.source;
      number = row.number;
      return glyph;
    };
    for (const FallbackFonts::Row& row : fallback_->rows) {
      if (row.isLastResort) continue;
      if (const u32 glyph = row.source->glyphOf(codePoint)) return take(row, glyph);
    }
    const Ref<FMFontMachine> machine = FMFontMachine::shared();
    Ref<IFMFont> found = Ref<IFMFont>::adopt(machine->fontWithGlyph(codePoint, &font_));
    auto* const other = corvix::query<IFMFontSource>(found.get());
    const u32 glyph = other ? other->glyphOf(codePoint) : 0;
    if (glyph == 0) return 0;
    const bool isLastResort = corvix::query<BoxFont>(found.get()) != nullptr;
    for (const FallbackFonts::Row& row : fallback_->rows) {
      if (isLastResort && row.isLastResort) return take(row, glyph);
    }
    fallback_->rows.push_back({std::move(found), other, nextFontNumber(), isLastResort});
    return take(fallback_->rows.back(), glyph);
  }

  IFMFont& font_;
  std::optional<FallbackFonts> own_;  // for fonts that keep none
  FallbackFonts* fallback_;
  IFMFontSource* source_;
  double size_;
  double x_ = 0;
  u32 base_ = 0;  // the last character that is no mark, and where it is; 0: there is none
  std::size_t baseAt_ = 0;
  std::vector<Placed> glyphs_;
};

// Collects glyphs that stand near each other and paints them as one mask.
class Run {
 public:
  Run(ITextTarget& target, double sizePx, i32 levels)
      : target_(target), size_(static_cast<u32>(sizePx * 64 + 0.5)), levels_(levels) {
    const double reach = 4 * sizePx;  // no glyph reaches farther
    reach_ = target.visibleArea();
    reach_ = {reach_.left - reach, reach_.top - reach, reach_.right + reach, reach_.bottom + reach};
  }

  // What is added is painted by `finish` at the latest.
  bool add(const Placed& glyph, Point device) {
    if (!(device.x > reach_.left && device.x < reach_.right && device.y > reach_.top && device.y < reach_.bottom))
      return true;
    waiting_[count_] = {glyph.source, device};
    keys_[count_] = {glyph.font, glyph.glyph, size_, levels_};
    return ++count_ < kTogether || place();
  }

  bool finish() { return place() && paint(); }
  bool hasAll() const noexcept { return hasAll_; }  // false: the font did not give each glyph

 private:
  static constexpr std::size_t kTogether = 64;  // glyphs that are looked for at once

  struct Waiting {
    IFMFontSource* source;
    Point device;
  };
  struct Part {
    GlyphCache::Entry coverage;
    i32 left;
    i32 top;
  };

  bool place() {
    GlyphCache::Entry found[kTogether];
    const std::size_t count = std::exchange(count_, 0);
    glyphCache().find(keys_, count, found);
    for (std::size_t i = 0; i < count; ++i) {
      if (!found[i]) found[i] = make(*waiting_[i].source, keys_[i]);
      hasAll_ = hasAll_ && found[i];
      if (found[i] && !place(std::move(found[i]), waiting_[i].device)) return false;
    }
    return true;
  }

  GlyphCache::Entry make(IFMFontSource& source, const GlyphCache::Key& key) const {
    if (GlyphCache::Entry entry = glyphCache().find(key)) return entry;  // of this text
    GlyphCoverage made;
    if (!source.coverage(key.glyph, key.size / 64.0, key.levels, made) || !isMask(made)) return nullptr;
    return glyphCache().add(key, std::move(made));
  }

  static bool isMask(const GlyphCoverage& made) noexcept {
    const auto isWithin = [](i32 value, i32 least) { return value >= least && value <= kLargestMask; };
    return isWithin(made.width, 0) && isWithin(made.height, 0) && isWithin(made.left, -kLargestMask) &&
           isWithin(made.top, -kLargestMask) && (made.rows || made.width == 0 || made.height == 0);
  }

  bool place(GlyphCache::Entry entry, Point device) {
    if (entry->width == 0 || entry->height == 0) return true;
    const i32 left = static_cast<i32>(std::floor(device.x + 0.5)) + entry->left;
    const i32 top = static_cast<i32>(std::floor(device.y + 0.5)) + entry->top;
    const PixelBox box = {left, top, left + entry->width, top + entry->height};
    const PixelBox together = {std::min(box_.left, box.left), std::min(box_.top, box.top),
                               std::max(box_.right, box.right), std::max(box_.bottom, box.bottom)};
    const bool isFar = !parts_.empty() && (together.right - together.left > kWidestRun ||
                                           together.bottom - together.top > 2 * kLargestRead);
    if (isFar && !paint()) return false;
    box_ = parts_.empty() ? box : together;
    parts_.push_back({std::move(entry), left, top});
    return true;
  }

  bool paint() {
    if (parts_.empty()) return true;
    const i32 width = box_.right - box_.left;
    const i32 height = box_.bottom - box_.top;
    mask_.assign(static_cast<std::size_t>(width) * static_cast<u32>(height), 0);
    for (const Part& part : parts_) {
      const GlyphCoverage& coverage = *part.coverage;
      const u8* from = coverage.rows.get();
      for (i32 y = 0; y < coverage.height; ++y) {
        u8* const to = &mask_[static_cast<std::size_t>(part.top - box_.top + y) * static_cast<u32>(width) +
                              static_cast<u32>(part.left - box_.left)];
        for (i32 x = 0; x < coverage.width; ++x, ++from) to[x] = std::max(to[x], *from);
      }
    }
    parts_.clear();
    return target_.paintCoverage(mask_.data(), width, box_);
  }

  ITextTarget& target_;
  u32 size_;  // in 64ths of a pixel
  i32 levels_;
  Box reach_;
  bool hasAll_ = true;
  std::size_t count_ = 0;
  Waiting waiting_[kTogether];
  GlyphCache::Key keys_[kTogether];
  PixelBox box_ = {};
  std::vector<Part> parts_;
  std::vector<u8> mask_;
};

// The outline of one glyph: of what a font gives up halfway, nothing reaches the context.
class GlyphOutline final : public IGlyphSink {
 public:
  // False, with nothing added, when the font does not give it.
  bool addTo(IGlyphSink& sink, const Placed& glyph, const Matrix& matrix) {
    points_.clear();
    kinds_.clear();
    if (!glyph.source->outline(glyph.glyph, *this)) return false;
    const Point* from = points_.data();
    for (const u8 kind : kinds_) {
      const u8 count = kind == kCurve ? 3 : 1;
      Point p[3];
      for (u8 i = 0; i < count; ++i) p[i] = matrix.apply(*from++);
      kind == kMove ? sink.moveTo(p[0]) : kind == kLine ? sink.lineTo(p[0]) : sink.curveTo(p[0], p[1], p[2]);
    }
    return true;
  }
  std::size_t points() const noexcept { return points_.size(); }

  void moveTo(Point to) override { add(kMove, {to}); }
  void lineTo(Point to) override { add(kLine, {to}); }
  void curveTo(Point control1, Point control2, Point to) override { add(kCurve, {control1, control2, to}); }

 private:
  static constexpr u8 kMove = 0, kLine = 1, kCurve = 2;

  void add(u8 kind, std::initializer_list<Point> points) {
    kinds_.push_back(kind);
    points_.insert(points_.end(), points);
  }

  std::vector<Point> points_;
  std::vector<u8> kinds_;
};

Matrix glyphMatrix(const Placed& glyph, double size, const Matrix& textToUser) noexcept {
  return Matrix{size, 0, 0, size, glyph.x, glyph.y}.then(textToUser);
}

// For contexts that know nothing of text: their own path.
class PathTarget final : public ITextTarget, public IGlyphSink {
 public:
  explicit PathTarget(IAGDC& context) noexcept : context_(context) {}
  Matrix textTransform() const noexcept override { return {0, 1, 1, 0, 0, 0}; }  // upright for nobody: outlines only
  Box visibleArea() const noexcept override { return {}; }
  bool paintCoverage(const u8*, i32, const PixelBox&) override { return false; }
  IGlyphSink& shape() override {
    if (!isBegun_) isBegun_ = context_.setFillRule(FillRule::Winding) && context_.beginPath();
    return *this;
  }
  bool fillShape() override {
    return finish([this] { return context_.drawPath(PathPaint::Fill); });
  }
  bool clipShape() override {
    return finish([this] { return context_.clipPath(); });
  }
  void moveTo(Point to) override {
    if (isOpen_) context_.closePath();
    isOpen_ = true;
    isGood_ = context_.moveTo(to.x, to.y) && isGood_;
  }
  void lineTo(Point to) override { isGood_ = context_.lineTo(to.x, to.y) && isGood_; }
  void curveTo(Point control1, Point control2, Point to) override {
    isGood_ = context_.curveTo(control1.x, control1.y, control2.x, control2.y, to.x, to.y) && isGood_;
  }

 private:
  template <class Use>
  bool finish(Use use) {
    if (!isBegun_) return true;
    if (isOpen_) context_.closePath();
    const bool isDone = isGood_ && use();
    context_.endPath();
    isBegun_ = isOpen_ = false;
    isGood_ = true;
    return isDone;
  }

  IAGDC& context_;
  bool isBegun_ = false;
  bool isOpen_ = false;
  bool isGood_ = true;
};

bool isGoodSize(double size, const Matrix& matrix) noexcept {
  return size > 0 && std::isfinite(size) && matrix.isFinite();
}

// The size in pixels of text that stands upright, else 0.
double readingSize(const Matrix& toDevice, double size) noexcept {
  constexpr double kClose = 1e-6;
  const double scale = toDevice.a;
  const bool isUpright = scale > 0 && std::abs(toDevice.d - scale) <= kClose * scale &&
                         std::abs(toDevice.b) <= kClose * scale && std::abs(toDevice.c) <= kClose * scale;
  const double sizePx = isUpright ? size * scale : 0;
  return sizePx >= 1 && sizePx <= kLargestRead ? sizePx : 0;
}

// Lets go of a shape that nothing came of.
void dropShape(IAGDC& context, ITextTarget& target) {
  const bool isSaved = context.saveClip();
  target.clipShape();
  if (isSaved) context.restoreClip();
}

// What throws has added no shape.
template <class Add>
bool shapeOrNothing(IAGDC& context, ITextTarget& target, Add add) {
  try {
    return add();
  } catch (...) {
    dropShape(context, target);
    throw;
  }
}

bool fillOutlines(IAGDC& context, ITextTarget& target, const std::vector<Placed>& glyphs, double size,
                  const Matrix& textToUser) {
  GlyphOutline outline;
  std::size_t points = 0;
  bool hasAll = true;
  return shapeOrNothing(context, target, [&] {
    for (const Placed& glyph : glyphs) {
      const bool isThere = outline.addTo(target.shape(), glyph, glyphMatrix(glyph, size, textToUser));
      hasAll = hasAll && isThere;
      if (isThere) points += outline.points();
      if (points < kShapePoints) continue;
      points = 0;
      if (!target.fillShape()) return false;
    }
    return (points == 0 || target.fillShape()) && hasAll;
  });
}

bool drawLine(IAGDC& context, const std::vector<Placed>& glyphs, double size, const Matrix& textToUser) {
  PathTarget paths(context);
  ITextTarget* const own = corvix::query<ITextTarget>(&context);
  ITextTarget& target = own ? *own : paths;
  const Matrix toDevice = textToUser.then(target.textTransform());
  if (!toDevice.isFinite()) return false;
  const double sizePx = readingSize(toDevice, size);
  if (sizePx == 0) return fillOutlines(context, target, glyphs, size, textToUser);
  Run run(target, sizePx, fontSettings().levels());
  for (const Placed& glyph : glyphs) {
    const Point device = toDevice.apply({glyph.x, glyph.y});
    if (!run.add(glyph, device)) return false;
  }
  return run.finish() && run.hasAll();
}

// Runs what may run out of memory, or throw what a font of another module throws: false then.
template <class Call>
bool withinMemory(IFMFont& font, Call call) noexcept {
  const void* const code = codeOf(&font);
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return false;
  } catch (const std::length_error&) {  // more glyphs than an address space holds
    return false;
  } catch (...) {
    logThrown(code, L"IFMFontSource");
    return false;
  }
}

}  // namespace

bool drawText(IAGDC& context, IFMFont& font, double size, const Matrix& textToUser, const wchar_t* text, i32 count,
              Point* end) {
  if (!context.canDraw() || !isGoodSize(size, textToUser) || count < 0 || (count > 0 && !text)) return false;
  return withinMemory(font, [&] {
    Line line(font, size);
    if (!line.canDraw()) return false;
    line.add(text, count);
    if (!std::isfinite(line.width()) || !drawLine(context, line.glyphs(), size, textToUser)) return false;
    if (end) *end = {line.width(), 0};
    return true;
  });
}

bool drawGlyphs(IAGDC& context, IFMFont& font, double size, const Matrix& textToUser, const GlyphPlace* glyphs,
                i32 count) {
  if (!context.canDraw() || !isGoodSize(size, textToUser) || count < 0 || (count > 0 && !glyphs)) return false;
  return withinMemory(font, [&] {
    Line line(font, size);
    if (!line.canDraw()) return false;
    for (i32 i = 0; i < count; ++i) {
      if (!isFinite({glyphs[i].x, glyphs[i].y})) return false;
      line.addAt(glyphs[i]);
    }
    return drawLine(context, line.glyphs(), size, textToUser);
  });
}

bool clipText(IAGDC& context, IFMFont& font, double size, const Matrix& textToUser, const wchar_t* text, i32 count) {
  if (!context.canDraw() || !isGoodSize(size, textToUser) || count < 0 || (count > 0 && !text)) return false;
  return withinMemory(font, [&] {
    Line line(font, size);
    if (!line.canDraw()) return false;
    line.add(text, count);
    PathTarget paths(context);
    ITextTarget* const own = corvix::query<ITextTarget>(&context);
    ITextTarget& target = own ? *own : paths;
    target.shape();
    GlyphOutline outline;
    return shapeOrNothing(context, target, [&] {
      for (const Placed& glyph : line.glyphs()) {
        if (outline.addTo(target.shape(), glyph, glyphMatrix(glyph, size, textToUser))) continue;
        dropShape(context, target);
        return false;
      }
      return target.clipShape();
    });
  });
}

double textWidth(IFMFont& font, double size, const wchar_t* text, i32 count) {
  double width = 0;
  if (!isGoodSize(size, {}) || count <= 0 || !text) return 0;
  withinMemory(font, [&] {
    Line line(font, size);
    if (!line.canDraw()) return false;
    line.add(text, count);
    width = std::isfinite(line.width()) ? line.width() : 0;
    return true;
  });
  return width;
}

}  // namespace corvix
