#include "plugins/fonts-freetype/FreeTypeFace_p.h"

#include "core/baselib/heap/Heap.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include FT_ADVANCES_H
#include FT_CID_H
#include FT_OUTLINE_H

namespace corvix {

namespace {

// Others that a FreeType may have are not asked: they read files that documents do not bring along.
constexpr const char* kDrivers[] = {"truetype", "cff", "type1", "t1cid"};

constexpr FT_Int32 kAsDrawn = FT_LOAD_NO_SCALE | FT_LOAD_NO_BITMAP | FT_LOAD_IGNORE_TRANSFORM;

// Hands an outline on to a sink, in ems, y downwards. What the sink throws must not pass through FreeType.
class Replay {
 public:
  Replay(IGlyphSink& sink, double em) noexcept : sink_(sink), em_(em) {}

  bool run(FT_Outline& outline) noexcept {
    constexpr FT_Outline_Funcs kSteps = {&move, &line, &conic, &cubic, 0, 0};
    return FT_Outline_Decompose(&outline, &kSteps, this) == 0;
  }

 private:
  static Replay& self(void* user) noexcept { return *static_cast<Replay*>(user); }
  Point point(const FT_Vector* at) const noexcept {
    return {static_cast<double>(at->x) / em_, -static_cast<double>(at->y) / em_};
  }

  template <class Step>
  int step(Point to, Step take) noexcept {
    try {
      take();
    } catch (...) {
      return FT_Err_Out_Of_Memory;
    }
    from_ = to;
    return 0;
  }

  static int move(const FT_Vector* to, void* user) {
    const Point p = self(user).point(to);
    return self(user).step(p, [&] { self(user).sink_.moveTo(p); });
  }
  static int line(const FT_Vector* to, void* user) {
    const Point p = self(user).point(to);
    return self(user).step(p, [&] { self(user).sink_.lineTo(p); });
  }
  static int conic(const FT_Vector* control, const FT_Vector* to, void* user) {
    const Point from = self(user).from_;
    const Point middle = self(user).point(control);
    const Point p = self(user).point(to);
    const auto third = [middle](Point end) { return Point{(end.x + 2 * middle.x) / 3, (end.y + 2 * middle.y) / 3}; };
    return self(user).step(p, [&] { self(user).sink_.curveTo(third(from), third(p), p); });
  }
  static int cubic(const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to, void* user) {
    const Replay& own = self(user);
    const Point p = own.point(to);
    return self(user).step(p, [&] { self(user).sink_.curveTo(own.point(control1), own.point(control2), p); });
  }

  IGlyphSink& sink_;
  double em_;
  Point from_ = {0, 0};
};

}  // namespace

FreeTypeFace::FreeTypeFace(HeapBuffer<u8> bytes, u32 count) noexcept : bytes_(std::move(bytes)) {
  memory_.user = this;
  memory_.alloc = &allocate;
  memory_.free = &release;
  memory_.realloc = &resize;
  stream_.size = count;
  stream_.descriptor.pointer = this;
  stream_.read = &read;
}

FreeTypeFace::~FreeTypeFace() {
  if (face_) FT_Done_Face(face_);
  if (library_) FT_Done_Library(library_);
  while (ring_.next != &ring_) release(&memory_, ring_.next + 1);
}

std::unique_ptr<FreeTypeFace> FreeTypeFace::open(HeapBuffer<u8> bytes, u32 count) {
  std::unique_ptr<FreeTypeFace> made(new FreeTypeFace(std::move(bytes), count));
  return made->openWithAnyDriver() ? std::move(made) : nullptr;
}

// A library of its own for each font, so that each belongs to one thread at a time.
bool FreeTypeFace::openWithAnyDriver() noexcept {
  if (FT_New_Library(&memory_, &library_) != 0) {
    library_ = nullptr;
    return false;
  }
  FT_Add_Default_Modules(library_);
  for (const char* const name : kDrivers) {
    FT_Open_Args how{};
    how.flags = FT_OPEN_STREAM | FT_OPEN_DRIVER;
    how.stream = &stream_;
    how.driver = FT_Get_Module(library_, name);
    if (!how.driver || FT_Open_Face(library_, &how, 0, &face_) != 0) {
      face_ = nullptr;
      continue;
    }
    return FT_IS_SCALABLE(face_) && face_->units_per_EM > 0 && face_->num_glyphs > 0;
  }
  return false;
}

void* FreeTypeFace::allocate(FT_Memory memory, long sizeBytes) noexcept {
  return resize(memory, 0, sizeBytes, nullptr);
}

void FreeTypeFace::release(FT_Memory memory, void* bytes) noexcept {
  Block* const block = static_cast<Block*>(bytes) - 1;
  static_cast<FreeTypeFace*>(memory->user)->memoryLeft_ += block->sizeBytes;
  block->previous->next = block->next;
  block->next->previous = block->previous;
  _sfree(block);
}

void* FreeTypeFace::resize(FT_Memory memory, long, long wanted, void* bytes) noexcept {
  auto& self = *static_cast<FreeTypeFace*>(memory->user);
  Block* const former = bytes ? static_cast<Block*>(bytes) - 1 : nullptr;
  const std::size_t had = former ? former->sizeBytes : 0;
  if (wanted < 0 || static_cast<std::size_t>(wanted) > kMostMemory) return nullptr;
  const std::size_t sizeBytes = sizeof(Block) + static_cast<std::size_t>(wanted);
  if (sizeBytes > self.memoryLeft_ + had) return nullptr;
  auto* const block = static_cast<Block*>(_srealloc(former, sizeBytes));
  if (!block) return nullptr;
  if (!former) {
    block->next = &self.ring_;
    block->previous = self.ring_.previous;
  }
  block->next->previous = block->previous->next = block;
  block->sizeBytes = sizeBytes;
  self.memoryLeft_ -= sizeBytes - had;
  return block + 1;
}

// A read of 0 bytes asks whether the place is there: 0 is yes.
unsigned long FreeTypeFace::read(FT_Stream stream, unsigned long offset, unsigned char* to,
                                 unsigned long count) noexcept {
  auto& self = *static_cast<FreeTypeFace*>(stream->descriptor.pointer);
  if (count == 0) return offset > stream->size;
  const auto cost = static_cast<u32>(1 + count / 1024);
  if (offset >= stream->size || cost > self.readsLeft_) return 0;
  self.readsLeft_ -= cost;
  count = std::min(count, stream->size - offset);
  std::memcpy(to, self.bytes_.get() + offset, count);
  return count;
}

FontMetrics FreeTypeFace::metrics() const noexcept {
  FontMetrics metrics;
  metrics.ascent = std::max(0.0, ems(face_->ascender));
  metrics.descent = std::max(0.0, ems(-face_->descender));
  metrics.lineGap = std::max(0.0, ems(face_->height) - metrics.ascent - metrics.descent);
  metrics.isFixedPitch = FT_IS_FIXED_WIDTH(face_);
  return metrics;
}

FT_CharMap FreeTypeFace::charMap(FT_Encoding encoding) const noexcept {
  for (FT_Int i = 0; i < face_->num_charmaps; ++i) {
    if (face_->charmaps[i]->encoding == encoding) return face_->charmaps[i];
  }
  return nullptr;
}

u32 FreeTypeFace::glyphIn(FT_CharMap map, u32 code) noexcept {
  readsLeft_ = kMostReads;
  return map && FT_Set_Charmap(face_, map) == 0 ? FT_Get_Char_Index(face_, code) : 0;
}

u32 FreeTypeFace::glyphOf(u32 codePoint) noexcept {
  readsLeft_ = kMostReads;
  if (codePoint > 0x10FFFF) return 0;
  if (FT_Select_Charmap(face_, FT_ENCODING_UNICODE) == 0) return FT_Get_Char_Index(face_, codePoint);
  return codePoint < 0x80 ? glyphOfCode(codePoint) : 0;
}

// Fonts of symbols have their codes in the private area, at 0xF000 as a rule.
u32 FreeTypeFace::glyphOfCode(u32 code) noexcept {
  FT_Bool isByCollection = 0;
  if (FT_Get_CID_Is_Internally_CID_Keyed(face_, &isByCollection) == 0 && isByCollection) {
    return load(code) ? code : 0;
  }
  if (const FT_CharMap symbols = charMap(FT_ENCODING_MS_SYMBOL)) {
    for (const u32 base : {0xF000u, 0xF100u, 0xF200u, 0u}) {
      if (const u32 glyph = glyphIn(symbols, base + code)) return glyph;
    }
  }
  for (const FT_Encoding encoding : {FT_ENCODING_ADOBE_CUSTOM, FT_ENCODING_ADOBE_STANDARD, FT_ENCODING_ADOBE_LATIN_1,
                                     FT_ENCODING_APPLE_ROMAN, FT_ENCODING_UNICODE}) {
    if (const u32 glyph = glyphIn(charMap(encoding), code)) return glyph;
  }
  return 0;
}

u32 FreeTypeFace::glyphOfName(const char* name) noexcept {
  readsLeft_ = kMostReads;
  return name && FT_HAS_GLYPH_NAMES(face_) ? FT_Get_Name_Index(face_, name) : 0;
}

double FreeTypeFace::advance(u32 glyph) noexcept {
  readsLeft_ = kMostReads;
  FT_Fixed units = 0;
  return FT_Get_Advance(face_, glyph, kAsDrawn, &units) == 0 ? std::max(0.0, ems(units)) : 0;
}

bool FreeTypeFace::load(u32 glyph) noexcept {
  readsLeft_ = kMostReads;
  return FT_Load_Glyph(face_, glyph, kAsDrawn) == 0 && face_->glyph->format == FT_GLYPH_FORMAT_OUTLINE;
}

bool FreeTypeFace::outline(u32 glyph, IGlyphSink& sink) noexcept {
  return load(glyph) && Replay(sink, face_->units_per_EM).run(face_->glyph->outline);
}

bool FreeTypeFace::coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) noexcept {
  if (!(sizePx > 0 && sizePx <= IFMFontSource::kMostSizePx) || !(levels == 2 || levels == 17 || levels == 65) ||
      !load(glyph)) {
    return false;
  }
  // To 64ths of pixels, and the lower left corner onto a whole one.
  FT_Outline& outline = face_->glyph->outline;
  const auto scale = static_cast<FT_Fixed>(std::lround(sizePx * 64 * 65536 / face_->units_per_EM));
  const FT_Matrix toSize = {scale, 0, 0, scale};
  FT_Outline_Transform(&outline, &toSize);
  FT_BBox box;
  FT_Outline_Get_CBox(&outline, &box);
  const auto pixel = [](FT_Pos at) { return static_cast<i32>(at >> 6); };
  GlyphCoverage made;
  made.left = pixel(box.xMin);
  made.top = -pixel(box.yMax + 63);
  made.width = pixel(box.xMax + 63) - made.left;
  made.height = -pixel(box.yMin) - made.top;
  if (outline.n_points == 0 || made.width <= 0 || made.height <= 0) {
    coverage = GlyphCoverage();
    return true;
  }
  if (made.width > kMostMaskBytes / made.height) return false;
  FT_Outline_Translate(&outline, -FT_Pos{made.left} * 64, FT_Pos{made.top + made.height} * 64);
  outline.flags &= ~FT_OUTLINE_EVEN_ODD_FILL;

  const auto count = static_cast<std::size_t>(made.width) * static_cast<u32>(made.height);
  const i32 stride = levels == 2 ? (made.width + 7) / 8 : made.width;
  HeapBuffer<u8> bits;
  if (!made.rows.tryAllocate(count)) return false;
  if (levels == 2 && !bits.tryAllocate(static_cast<std::size_t>(stride) * static_cast<u32>(made.height))) return false;
  FT_Bitmap bitmap{};
  bitmap.width = static_cast<unsigned>(made.width);
  bitmap.rows = static_cast<unsigned>(made.height);
  bitmap.pitch = stride;
  bitmap.buffer = levels == 2 ? bits.get() : made.rows.get();
  bitmap.pixel_mode = levels == 2 ? FT_PIXEL_MODE_MONO : FT_PIXEL_MODE_GRAY;
  bitmap.num_grays = 256;
  std::memset(bitmap.buffer, 0, static_cast<std::size_t>(stride) * static_cast<u32>(made.height));
  if (FT_Outline_Get_Bitmap(library_, &outline, &bitmap) != 0) return false;

  const u32 steps = static_cast<u32>(levels) - 1;
  u8* to = made.rows.get();
  for (i32 y = 0; y < made.height; ++y) {
    const u8* const row = bitmap.buffer + static_cast<std::ptrdiff_t>(stride) * y;
    for (i32 x = 0; x < made.width; ++x, ++to) {
      const u32 level = levels == 2 ? row[x / 8] >> (7 - x % 8) & 1 : (row[x] * steps + 127) / 255;
      *to = static_cast<u8>((level * 255 + steps / 2) / steps);
    }
  }
  coverage = std::move(made);
  return true;
}

}  // namespace corvix
