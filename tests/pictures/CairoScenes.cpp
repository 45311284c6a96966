// Draws scenes with cairo, as it smooths and by 16 by 16 samples a pixel, compares what the contexts drew with the
// samples, and puts all into one sheet:  cairo-scenes SCENES FOLDER [SHEET.png]
//
// A line for each scene and kind: name, kind, mean and 99th percentile of the error in 255ths, pixels, greatest error
// of plain pixels. The error of a pixel is the greatest of its components. A pixel is plain when it and its eight
// neighbours have one colour; pixels that are plain in both pictures do not count for mean and percentile.
#include "Scene.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>

#include <cairo.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

namespace {

using namespace pictures;

constexpr int kSamples = 16;

struct Destroy {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using Surface = std::unique_ptr<cairo_surface_t, Destroy>;
using Context = std::unique_ptr<cairo_t, Destroy>;
using Pattern = std::unique_ptr<cairo_pattern_t, Destroy>;

FT_Library library;

class CairoCanvas final : public Canvas {
 public:
  explicit CairoCanvas(int scale) : scale_(scale) {
    surface_.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth * scale, kHeight * scale));
    cr_.reset(cairo_create(surface_.get()));
    cairo_set_source_rgb(cr(), 1, 1, 1);
    cairo_paint(cr());
    cairo_scale(cr(), scale, scale);
    cairo_get_matrix(cr(), &base_);
    cairo_set_fill_rule(cr(), CAIRO_FILL_RULE_EVEN_ODD);
    cairo_set_antialias(cr(), scale > 1 ? CAIRO_ANTIALIAS_NONE : CAIRO_ANTIALIAS_BEST);
    cairo_set_tolerance(cr(), 0.05);
    cairo_set_line_width(cr(), 1);
    solid(fill_, 0xFFFFFFFF);
    solid(stroke_, 0xFF000000);
  }
  cairo_surface_t* finish() {
    cairo_surface_flush(surface_.get());
    return surface_.get();
  }

  bool apply(const std::string& name, const Numbers& n) override {
    const int whole = n.empty() ? 0 : static_cast<int>(n[0]);
    cairo_t* const c = cr();
    if (name == "fill") {
      solid(fill_, static_cast<std::uint32_t>(n[0]));
    } else if (name == "stroke") {
      solid(stroke_, static_cast<std::uint32_t>(n[0]));
    } else if (name == "width") {
      cairo_set_line_width(c, n[0] > 0 ? n[0] : 1);
    } else if (name == "cap") {
      cairo_set_line_cap(c, static_cast<cairo_line_cap_t>(whole));
    } else if (name == "join") {
      cairo_set_line_join(c, static_cast<cairo_line_join_t>(whole));
    } else if (name == "miter") {
      cairo_set_miter_limit(c, n[0]);
    } else if (name == "dash") {
      cairo_set_dash(c, n.data() + 1, static_cast<int>(n.size()) - 1, n[0]);
    } else if (name == "rule") {
      cairo_set_fill_rule(c, whole ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
    } else if (name == "transform") {
      cairo_set_matrix(c, &base_);
      const cairo_matrix_t own = {n[0], n[1], n[2], n[3], n[4], n[5]};
      cairo_transform(c, &own);
    } else if (name == "begin") {
      cairo_new_path(c);
    } else if (name == "m") {
      cairo_move_to(c, n[0], n[1]);
    } else if (name == "l") {
      cairo_line_to(c, n[0], n[1]);
    } else if (name == "c") {
      cairo_curve_to(c, n[0], n[1], n[2], n[3], n[4], n[5]);
    } else if (name == "z") {
      cairo_close_path(c);
    } else if (name == "r") {
      cairo_rectangle(c, n[0], n[1], n[2], n[3]);
    } else if (name == "rect") {
      cairo_new_path(c);
      cairo_rectangle(c, n[0], n[1], n[2], n[3]);
      painted([&] { use(fill_), cairo_fill(c); });
    } else if (name == "paint") {
      if (whole != 0) painted([&] { use(fill_), cairo_fill_preserve(c); });
      if (whole != 1) painted([&] { use(stroke_), cairo_stroke_preserve(c); });
      cairo_new_path(c);
    } else if (name == "clip") {
      cairo_clip(c);
    } else if (name == "clipstroke") {
      clipStroke();
    } else if (name == "save") {
      cairo_save(c);
    } else if (name == "restore") {
      cairo_restore(c);
    } else if (name == "opacity") {
      opacity_ = n[0];
    } else if (name == "blend") {
      constexpr cairo_operator_t kModes[] = {
          CAIRO_OPERATOR_OVER,       CAIRO_OPERATOR_MULTIPLY,   CAIRO_OPERATOR_SCREEN,      CAIRO_OPERATOR_OVERLAY,
          CAIRO_OPERATOR_DARKEN,     CAIRO_OPERATOR_LIGHTEN,    CAIRO_OPERATOR_COLOR_DODGE, CAIRO_OPERATOR_COLOR_BURN,
          CAIRO_OPERATOR_HARD_LIGHT, CAIRO_OPERATOR_SOFT_LIGHT, CAIRO_OPERATOR_DIFFERENCE,  CAIRO_OPERATOR_EXCLUSION};
      mode_ = kModes[whole];
    } else if (name == "group") {
      groups_.push_back({opacity_, mode_, std::move(mask_)});
      opacity_ = 1;
      mode_ = CAIRO_OPERATOR_OVER;
      cairo_push_group(c);
    } else if (name == "endgroup" || name == "endmask") {
      const Pattern picture(cairo_pop_group(c));
      opacity_ = groups_.back().opacity;
      mode_ = groups_.back().mode;
      mask_ = std::move(groups_.back().mask);
      groups_.pop_back();
      if (name == "endmask") return makeMask(picture.get(), whole == 1), true;
      painted([&] { cairo_set_source(c, picture.get()), cairo_paint(c); });
    } else if (name == "nomask") {
      mask_.reset();
    } else if (name == "all") {
      painted([&] { use(fill_), cairo_paint(c); });
    }
    return true;
  }

  bool image(const std::string& kind, int width, int height, const Six& place) override {
    const Pattern pattern = made(kind, width, height, place, CAIRO_EXTEND_PAD);
    painted([&] { onto(place), cairo_set_source(cr(), pattern.get()), cairo_fill(cr()); });
    return true;
  }
  bool stencil(int width, int height, const Six& place) override {
    const Pattern pattern = made("bits", width, height, place, CAIRO_EXTEND_PAD);
    painted([&] {
      cairo_save(cr());
      onto(place);
      cairo_clip(cr());
      use(fill_);
      cairo_mask(cr(), pattern.get());
      cairo_restore(cr());
    });
    return true;
  }
  bool tile(const std::string& kind, int width, int height, const Six& place) override {
    fill_ = placed(made(kind, width, height, place, CAIRO_EXTEND_REPEAT));
    return true;
  }
  bool mask(const std::string& kind, int width, int height, const Six& place) override {
    cairo_push_group(cr());
    const Pattern pattern = made(kind, width, height, place, CAIRO_EXTEND_PAD);
    onto(place);
    cairo_set_source(cr(), pattern.get());
    cairo_fill(cr());
    makeMask(Pattern(cairo_pop_group(cr())).get(), false);
    return true;
  }
  bool gradient(bool isForStrokes, const Numbers& p, unsigned extend, const std::vector<Stop>& stops) override {
    Pattern pattern(p.size() == 4 ? cairo_pattern_create_linear(p[0], p[1], p[2], p[3])
                                  : cairo_pattern_create_radial(p[0], p[1], p[2], p[3], p[4], p[5]));
    for (const Stop& stop : stops) {
      const auto part = [&](int shift) { return (stop.color >> shift & 255) / 255.0; };
      cairo_pattern_add_color_stop_rgba(pattern.get(), stop.offset, part(16), part(8), part(0), part(24));
    }
    cairo_pattern_set_extend(pattern.get(), extend ? CAIRO_EXTEND_PAD : CAIRO_EXTEND_NONE);
    (isForStrokes ? stroke_ : fill_) = placed(std::move(pattern));
    return true;
  }
  // Upright text up to 96 pixels has its glyphs on whole pixels.
  bool text(const std::string& font, double size, const Six& m, const std::string& ascii, bool isClip) override {
    static std::map<std::string, FT_Face> faces;
    FT_Face& face = faces[font];
    if (!face && FT_New_Face(library, font.c_str(), 0, &face)) return false;
    const bool isRead = !isClip && m.a == m.d && m.b == 0 && m.c == 0 && m.a > 0 && size * m.a <= 96;
    const double em = size / face->units_per_EM;
    double pen = 0;
    cairo_new_path(cr());
    for (const char character : ascii) {
      FT_Load_Char(face, static_cast<unsigned char>(character), FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP);
      Six at = {m.a * em, m.b * em, m.c * em, m.d * em, m.a * pen + m.e, m.b * pen + m.f};
      if (isRead) at.e = std::floor(at.e + 0.5), at.f = std::floor(at.f + 0.5);
      outline(face->glyph->outline, at);
      pen += static_cast<double>(face->glyph->metrics.horiAdvance) * em;
    }
    const cairo_fill_rule_t rule = cairo_get_fill_rule(cr());
    cairo_set_fill_rule(cr(), CAIRO_FILL_RULE_WINDING);
    if (isClip) {
      cairo_clip(cr());
    } else {
      painted([&] { use(fill_), cairo_fill_preserve(cr()); });
    }
    cairo_new_path(cr());
    cairo_set_fill_rule(cr(), rule);
    return true;
  }

 private:
  // A paint and the transform that it was set by.
  struct Paint {
    Pattern pattern;
    cairo_matrix_t matrix;
  };
  struct Group {
    double opacity;
    cairo_operator_t mode;
    Surface mask;
  };

  cairo_t* cr() const { return cr_.get(); }
  Paint placed(Pattern pattern) const {
    Paint paint{std::move(pattern), {}};
    cairo_get_matrix(cr(), &paint.matrix);
    return paint;
  }
  void solid(Paint& paint, std::uint32_t color) const {
    const auto part = [&](int shift) { return (color >> shift & 255) / 255.0; };
    paint = placed(Pattern(cairo_pattern_create_rgba(part(16), part(8), part(0), part(24))));
  }
  void use(const Paint& paint) const {
    cairo_matrix_t now;
    cairo_get_matrix(cr(), &now);
    cairo_set_matrix(cr(), &paint.matrix);
    cairo_set_source(cr(), paint.pattern.get());
    cairo_set_matrix(cr(), &now);
  }
  template <class Draw>
  void painted(Draw draw) {
    const bool isPlain = opacity_ == 1 && mode_ == CAIRO_OPERATOR_OVER && !mask_;
    if (isPlain) return draw();
    cairo_push_group(cr());
    draw();
    cairo_pop_group_to_source(cr());
    cairo_set_operator(cr(), mode_);
    if (mask_) {
      cairo_matrix_t now;
      cairo_get_matrix(cr(), &now);
      cairo_identity_matrix(cr());
      cairo_mask_surface(cr(), mask_.get(), 0, 0);
      cairo_set_matrix(cr(), &now);
    } else {
      cairo_paint_with_alpha(cr(), opacity_);
    }
    cairo_set_operator(cr(), CAIRO_OPERATOR_OVER);
  }
  void onto(const Six& place) const {
    const cairo_matrix_t unit = {place.a, place.b, place.c, place.d, place.e, place.f};
    cairo_matrix_t now;
    cairo_get_matrix(cr(), &now);
    cairo_transform(cr(), &unit);
    cairo_new_path(cr());
    cairo_rectangle(cr(), 0, 0, 1, 1);
    cairo_set_matrix(cr(), &now);
  }
  Pattern made(const std::string& kind, int width, int height, const Six& place, cairo_extend_t extend) {
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    for (int y = 0; y < height; ++y) {
      auto* const row = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface.get()) +
                                                         y * cairo_image_surface_get_stride(surface.get()));
      for (int x = 0; x < width; ++x) {
        std::uint32_t pixel = pixelOf(kind, width, height, x, y);
        if (kind == "bits") pixel = pixel == 0xFFFFFFFF ? pixel : 0;
        const std::uint32_t alpha = pixel >> 24;
        row[x] = alpha << 24;
        for (int shift = 0; shift < 24; shift += 8) row[x] |= ((pixel >> shift & 255) * alpha + 127) / 255 << shift;
      }
    }
    cairo_surface_mark_dirty(surface.get());
    Pattern pattern(cairo_pattern_create_for_surface(surface.get()));
    cairo_matrix_t matrix = {place.a / width, place.b / width, place.c / height, place.d / height, place.e, place.f};
    cairo_matrix_invert(&matrix);
    cairo_pattern_set_matrix(pattern.get(), &matrix);
    cairo_pattern_set_extend(pattern.get(), extend);
    // Made smaller, samples of the nearest pixel are the average; of a stencil they always are what is meant.
    const bool isSmaller = std::hypot(place.a, place.b) <= width * 1.0001;
    const bool isAlong = place.b == 0 && place.c == 0;
    const bool isNearest = kind == "bits" || (isSmaller && (isAlong || std::hypot(place.a, place.b) < 0.9 * width));
    cairo_pattern_set_filter(pattern.get(), scale_ == 1 ? CAIRO_FILTER_GOOD
                                            : isNearest ? CAIRO_FILTER_NEAREST
                                                        : CAIRO_FILTER_BILINEAR);
    return pattern;
  }
  void makeMask(cairo_pattern_t* picture, bool isAlpha) {
    const int width = kWidth * scale_;
    const int height = kHeight * scale_;
    const Surface copy(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    const Context to(cairo_create(copy.get()));
    cairo_scale(to.get(), scale_, scale_);
    cairo_set_source(to.get(), picture);
    cairo_paint(to.get());
    cairo_surface_flush(copy.get());
    mask_.reset(cairo_image_surface_create(CAIRO_FORMAT_A8, width, height));
    for (int y = 0; y < height; ++y) {
      const auto* const from = reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(copy.get()) +
                                                                      y * cairo_image_surface_get_stride(copy.get()));
      unsigned char* const row =
          cairo_image_surface_get_data(mask_.get()) + y * cairo_image_surface_get_stride(mask_.get());
      for (int x = 0; x < width; ++x) {
        const std::uint32_t p = from[x];
        row[x] = static_cast<unsigned char>(
            isAlpha ? p >> 24 : std::lround(0.3 * (p >> 16 & 255) + 0.59 * (p >> 8 & 255) + 0.11 * (p & 255)));
      }
    }
    cairo_surface_mark_dirty(mask_.get());
  }
  // As there is no such clip: its picture is a mask for all that follows.
  void clipStroke() {
    cairo_push_group(cr());
    cairo_set_source_rgb(cr(), 1, 1, 1);
    cairo_stroke(cr());
    makeMask(Pattern(cairo_pop_group(cr())).get(), true);
  }
  void outline(const FT_Outline& outline, const Six& at) {
    struct Sink {
      cairo_t* to;
      Six m;
      double x = 0, y = 0;
      void put(const FT_Vector* v, double& px, double& py) const {
        px = m.a * static_cast<double>(v->x) - m.c * static_cast<double>(v->y) + m.e;
        py = m.b * static_cast<double>(v->x) - m.d * static_cast<double>(v->y) + m.f;
      }
    } sink{cr(), at};
    FT_Outline_Funcs functions{};
    functions.move_to = [](const FT_Vector* v, void* user) {
      auto& s = *static_cast<Sink*>(user);
      cairo_close_path(s.to);
      s.put(v, s.x, s.y);
      cairo_move_to(s.to, s.x, s.y);
      return 0;
    };
    functions.line_to = [](const FT_Vector* v, void* user) {
      auto& s = *static_cast<Sink*>(user);
      s.put(v, s.x, s.y);
      cairo_line_to(s.to, s.x, s.y);
      return 0;
    };
    functions.conic_to = [](const FT_Vector* control, const FT_Vector* v, void* user) {
      auto& s = *static_cast<Sink*>(user);
      double cx, cy, x, y;
      s.put(control, cx, cy);
      s.put(v, x, y);
      cairo_curve_to(s.to, s.x + (cx - s.x) * 2 / 3, s.y + (cy - s.y) * 2 / 3, x + (cx - x) * 2 / 3,
                     y + (cy - y) * 2 / 3, x, y);
      s.x = x;
      s.y = y;
      return 0;
    };
    functions.cubic_to = [](const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* v, void* user) {
      auto& s = *static_cast<Sink*>(user);
      double x1, y1, x2, y2;
      s.put(c1, x1, y1);
      s.put(c2, x2, y2);
      s.put(v, s.x, s.y);
      cairo_curve_to(s.to, x1, y1, x2, y2, s.x, s.y);
      return 0;
    };
    FT_Outline copy = outline;
    FT_Outline_Decompose(&copy, &functions, &sink);
    cairo_close_path(cr());
  }

  int scale_;
  Surface surface_;
  Context cr_;
  cairo_matrix_t base_;
  Paint fill_;
  Paint stroke_;
  double opacity_ = 1;
  cairo_operator_t mode_ = CAIRO_OPERATOR_OVER;
  Surface mask_;
  std::vector<Group> groups_;
};

using Picture = std::vector<std::uint32_t>;

Picture pictureOf(cairo_surface_t* surface, int samples) {
  Picture picture(kWidth * kHeight);
  const unsigned char* const data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      unsigned sums[3] = {};
      for (int j = 0; j < samples; ++j) {
        const auto* const row = reinterpret_cast<const std::uint32_t*>(data + (y * samples + j) * stride) + x * samples;
        for (int i = 0; i < samples; ++i) {
          for (int part = 0; part < 3; ++part) sums[part] += row[i] >> (8 * part) & 255;
        }
      }
      std::uint32_t& pixel = picture[static_cast<std::size_t>(y * kWidth + x)];
      const unsigned all = static_cast<unsigned>(samples * samples);
      for (int part = 0; part < 3; ++part) pixel |= (sums[part] + all / 2) / all << (8 * part);
    }
  }
  return picture;
}

bool isPlain(const Picture& picture, int x, int y) {
  const std::uint32_t own = picture[static_cast<std::size_t>(y * kWidth + x)];
  for (int j = std::max(0, y - 1); j <= std::min(kHeight - 1, y + 1); ++j) {
    for (int i = std::max(0, x - 1); i <= std::min(kWidth - 1, x + 1); ++i) {
      if (picture[static_cast<std::size_t>(j * kWidth + i)] != own) return false;
    }
  }
  return true;
}

void compare(const std::string& scene, const char* kind, const Picture& drawn, const Picture& sampled) {
  std::vector<int> errors;
  int plainError = 0;
  double sum = 0;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const auto at = static_cast<std::size_t>(y * kWidth + x);
      int error = 0;
      for (int shift = 0; shift < 24; shift += 8) {
        error = std::max(
            error, std::abs(static_cast<int>(drawn[at] >> shift & 255) - static_cast<int>(sampled[at] >> shift & 255)));
      }
      if (isPlain(drawn, x, y) && isPlain(sampled, x, y)) {
        plainError = std::max(plainError, error);
      } else {
        errors.push_back(error);
        sum += error;
      }
    }
  }
  std::sort(errors.begin(), errors.end());
  const std::size_t count = errors.size();
  std::printf("%s %s %.2f %d %zu %d\n", scene.c_str(), kind, count ? sum / static_cast<double>(count) : 0,
              count ? errors[count * 99 / 100] : 0, count, plainError);
}

void label(cairo_t* sheet, double x, double y, const std::string& text) {
  cairo_set_source_rgb(sheet, 0.2, 0.2, 0.25);
  cairo_set_font_size(sheet, 9);
  cairo_move_to(sheet, x, y);
  cairo_show_text(sheet, text.c_str());
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3 || FT_Init_FreeType(&library)) return 2;
  std::ifstream file(arguments[1]);
  const std::vector<Scene> scenes = read(file);
  constexpr int kAcross = 2;  // scenes beside each other, of four pictures each, at half their size
  constexpr int kCellWidth = 4 * (kWidth / 2 + 4) + 12;
  constexpr int kCellHeight = kHeight / 2 + 16;
  const int rows = (static_cast<int>(scenes.size()) + kAcross - 1) / kAcross;
  const Surface sheet(cairo_image_surface_create(CAIRO_FORMAT_RGB24, kAcross * kCellWidth, rows * kCellHeight + 14));
  const Context onto(cairo_create(sheet.get()));
  cairo_set_source_rgb(onto.get(), 0.93, 0.93, 0.95);
  cairo_paint(onto.get());
  int number = 0;
  for (const Scene& scene : scenes) {
    CairoCanvas samples(kSamples);
    CairoCanvas smooth(1);
    draw(scene.lines, samples);
    draw(scene.lines, smooth);
    const Picture sampled = pictureOf(samples.finish(), kSamples);
    const int left = number % kAcross * kCellWidth + 6;
    const int top = number / kAcross * kCellHeight + 14;
    label(onto.get(), left, top + 10, scene.name + ": plain GDI, GDI+, smooth, cairo");
    int column = 0;
    for (const char* const kind : {"gdi", "gdiplus", "smooth", "cairo"}) {
      const bool isCairo = std::strcmp(kind, "cairo") == 0;
      const std::string path = std::string(arguments[2]) + "/" + scene.name + "." + kind + ".png";
      const Surface loaded(isCairo ? cairo_surface_reference(smooth.finish())
                                   : cairo_image_surface_create_from_png(path.c_str()));
      if (cairo_surface_status(loaded.get()) == CAIRO_STATUS_SUCCESS) {
        compare(scene.name, kind, pictureOf(loaded.get(), 1), sampled);
        cairo_save(onto.get());
        cairo_translate(onto.get(), left + column * (kWidth / 2 + 4), top + 13);
        cairo_scale(onto.get(), 0.5, 0.5);
        cairo_set_source_surface(onto.get(), loaded.get(), 0, 0);
        cairo_pattern_set_filter(cairo_get_source(onto.get()), CAIRO_FILTER_GOOD);
        cairo_paint(onto.get());
        cairo_restore(onto.get());
      }
      ++column;
    }
    ++number;
  }
  if (count > 3) cairo_surface_write_to_png(sheet.get(), arguments[3]);
  return 0;
}
