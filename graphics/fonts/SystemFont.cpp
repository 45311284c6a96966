#include "graphics/fonts/SystemFont_p.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace corvix {

namespace {

constexpr u32 kUsualEm = 2048;
constexpr std::size_t kMostFamilies = 1000;
constexpr u32 kMostGlyphBytes = 4u << 20;
constexpr DWORD kCharacterTable = 0x70616D63;  // "cmap"

FIXED fixedOf(double value) noexcept {
  const auto whole = static_cast<i32>(std::lround(value * 65536));
  FIXED fixed;
  std::memcpy(&fixed, &whole, sizeof fixed);
  return fixed;
}

double fromFixed(FIXED fixed) noexcept { return fixed.value + fixed.fract / 65536.0; }

MAT2 scaled(double factor) noexcept { return {fixedOf(factor), fixedOf(0), fixedOf(0), fixedOf(factor)}; }

// The system's outlines have y upwards.
class Outline {
 public:
  Outline(const u8* bytes, u32 size, double em) noexcept : at_(bytes), end_(bytes + size), em_(em) {}

  bool replay(IGlyphSink& sink) {
    while (static_cast<std::size_t>(end_ - at_) >= sizeof(TTPOLYGONHEADER)) {
      TTPOLYGONHEADER figure;
      std::memcpy(&figure, at_, sizeof figure);
      if (figure.cb < sizeof figure || figure.cb > static_cast<u32>(end_ - at_)) return false;
      const u8* const behind = at_ + figure.cb;
      at_ += sizeof figure;
      from_ = pointOf(figure.pfxStart);
      sink.moveTo(from_);
      while (at_ < behind) {
        if (!curve(behind, sink)) return false;
      }
    }
    return at_ == end_;
  }

 private:
  Point pointOf(const POINTFX& point) const noexcept { return {fromFixed(point.x) / em_, -fromFixed(point.y) / em_}; }

  Point take() noexcept {
    POINTFX point;
    std::memcpy(&point, at_, sizeof point);
    at_ += sizeof point;
    return pointOf(point);
  }

  bool curve(const u8* behind, IGlyphSink& sink) {
    constexpr std::size_t kHead = 2 * sizeof(WORD);
    if (static_cast<std::size_t>(behind - at_) < kHead) return false;
    WORD kind;
    WORD count;
    std::memcpy(&kind, at_, sizeof kind);
    std::memcpy(&count, at_ + sizeof kind, sizeof count);
    at_ += kHead;
    if (count > static_cast<std::size_t>(behind - at_) / sizeof(POINTFX)) return false;
    switch (kind) {
      case TT_PRIM_LINE:
        for (; count > 0; --count) sink.lineTo(from_ = take());
        return true;
      case TT_PRIM_QSPLINE:
        return quadratic(count, sink);
      case TT_PRIM_CSPLINE:
        for (; count >= 3; count = static_cast<WORD>(count - 3)) {
          const Point first = take();
          const Point second = take();
          sink.curveTo(first, second, from_ = take());
        }
        return count == 0;
      default:
        return false;
    }
  }

  // Between two control points the curve passes through their middle.
  bool quadratic(u32 count, IGlyphSink& sink) {
    if (count < 2) return false;
    Point control = take();
    for (u32 left = count - 1; left > 0; --left) {
      const Point next = take();
      const Point to = left == 1 ? next : Point{(control.x + next.x) / 2, (control.y + next.y) / 2};
      const auto third = [](Point end, Point middle) {
        return Point{(end.x + 2 * middle.x) / 3, (end.y + 2 * middle.y) / 3};
      };
      sink.curveTo(third(from_, control), third(to, control), to);
      from_ = to;
      control = next;
    }
    return true;
  }

  const u8* at_;
  const u8* end_;
  double em_;
  Point from_ = {0, 0};
};

u32 bigEndian(const u8* bytes, u32 count) noexcept {
  u32 number = 0;
  for (u32 i = 0; i < count; ++i) number = number << 8 | bytes[i];
  return number;
}

// The part of a character table that names characters beyond the basic plane; empty when there is none or it
// contradicts itself.
std::vector<u8> tableBeyond(HDC device) {
  constexpr u32 kMostBytes = 16u << 20;
  const u32 size = GetFontData(device, kCharacterTable, 0, nullptr, 0);
  if (size == GDI_ERROR || size < 4 || size > kMostBytes) return {};
  std::vector<u8> table(size);
  if (GetFontData(device, kCharacterTable, 0, table.data(), size) != size) return {};
  const u32 count = std::min<u32>(bigEndian(&table[2], 2), (size - 4) / 8);
  for (u32 i = 0; i < count; ++i) {
    const u8* const record = &table[4 + 8 * std::size_t{i}];
    const u32 platform = bigEndian(record, 2);
    const u32 encoding = bigEndian(record + 2, 2);
    const u32 offset = bigEndian(record + 4, 4);
    const bool isFull = (platform == 3 && encoding == 10) || (platform == 0 && encoding >= 4);
    if (!isFull || offset > size || size - offset < 16 || bigEndian(&table[offset], 2) != 12) continue;
    const u32 groups = std::min(bigEndian(&table[offset + 12], 4), (size - offset - 16) / 12);
    const u8* const first = table.data() + offset + 16;
    return {first, first + std::size_t{groups} * 12};
  }
  return {};
}

}  // namespace

bool SystemFont::prepare() noexcept {
  if (isTried_) return static_cast<bool>(selected_);
  isTried_ = true;
  device_.reset(CreateCompatibleDC(nullptr));
  if (!device_) return false;
  LOGFONTW wanted{};
  wanted.lfHeight = -static_cast<LONG>(kUsualEm);
  wanted.lfWeight = face_.weight ? face_.weight : FW_NORMAL;
  wanted.lfItalic = face_.italic;
  wanted.lfCharSet = DEFAULT_CHARSET;
  wanted.lfOutPrecision = OUT_OUTLINE_PRECIS;
  wanted.lfQuality = ANTIALIASED_QUALITY;
  const std::wstring_view family = face_.family.view().substr(0, LF_FACESIZE - 1);
  std::copy(family.begin(), family.end(), wanted.lfFaceName);
  font_.reset(CreateFontIndirectW(&wanted));
  selected_ = gdi::select(device_.get(), font_.get());
  TEXTMETRICW text{};
  if (!selected_ || !GetTextMetricsW(device_.get(), &text)) {
    selected_.reset();
    return false;
  }
  emPx_ = kUsualEm;
  metrics_.ascent = text.tmAscent / emPx_;
  metrics_.descent = text.tmDescent / emPx_;
  metrics_.lineGap = text.tmExternalLeading / emPx_;
  metrics_.isFixedPitch = !(text.tmPitchAndFamily & TMPF_FIXED_PITCH);  // the bit says the opposite of its name
  return true;
}

FontMetrics SystemFont::metrics() {
  prepare();
  return metrics_;
}

u32 SystemFont::glyphOf(u32 codePoint) {
  const auto known = glyphs_.find(codePoint);
  if (known != glyphs_.end()) return known->second;
  const u32 glyph = findGlyph(codePoint);
  if (glyphs_.size() >= 0x4000) glyphs_.clear();  // a text of all there is
  glyphs_.emplace(codePoint, glyph);
  return glyph;
}

u32 SystemFont::findGlyph(u32 codePoint) {
  if (!prepare() || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint < 0xE000)) return 0;
  if (codePoint > 0xFFFF) return glyphBeyond(codePoint);
  const auto unit = static_cast<wchar_t>(codePoint);
  WORD glyph = 0xFFFF;
  const DWORD count = GetGlyphIndicesW(device_.get(), &unit, 1, &glyph, GGI_MARK_NONEXISTING_GLYPHS);
  return count == 1 && glyph != 0xFFFF ? glyph : 0;
}

u32 SystemFont::glyphBeyond(u32 codePoint) {
  if (!hasBeyond_) {
    beyond_ = tableBeyond(device_.get());
    hasBeyond_ = true;
  }
  std::size_t low = 0;
  std::size_t high = beyond_.size() / 12;
  while (low < high) {
    const std::size_t middle = (low + high) / 2;
    const u8* const group = &beyond_[12 * middle];
    const u32 first = bigEndian(group, 4);
    if (codePoint < first) {
      high = middle;
    } else if (codePoint > bigEndian(group + 4, 4)) {
      low = middle + 1;
    } else {
      const u32 glyph = bigEndian(group + 8, 4) + (codePoint - first);
      return glyph <= 0xFFFF ? glyph : 0;
    }
  }
  return 0;
}

double SystemFont::advance(u32 glyph) {
  const auto known = advances_.find(glyph);
  if (known != advances_.end()) return known->second;
  if (!prepare() || glyph > 0xFFFF) return 0;
  ABC widths{};
  if (!GetCharABCWidthsI(device_.get(), glyph, 1, nullptr, &widths)) return 0;
  const double advance = std::max(0.0, (widths.abcA + static_cast<int>(widths.abcB) + widths.abcC) / emPx_);
  advances_.emplace(glyph, advance);
  return advance;
}

bool SystemFont::outline(u32 glyph, IGlyphSink& sink) {
  if (!prepare() || glyph > 0xFFFF) return false;
  constexpr UINT kForm = GGO_NATIVE | GGO_GLYPH_INDEX | GGO_UNHINTED;
  const MAT2 same = scaled(1);
  GLYPHMETRICS box;
  const DWORD size = GetGlyphOutlineW(device_.get(), glyph, kForm, &box, 0, nullptr, &same);
  if (size == GDI_ERROR || size > kMostGlyphBytes) return false;
  if (size == 0) return true;
  HeapBuffer<u8> bytes;
  if (!bytes.tryAllocate(size)) return false;
  const DWORD got = GetGlyphOutlineW(device_.get(), glyph, kForm, &box, size, bytes.get(), &same);
  return got <= size && Outline(bytes.get(), got, emPx_).replay(sink);
}

bool SystemFont::coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) {
  if (!(sizePx > 0 && sizePx <= kMostSizePx) || !prepare() || glyph > 0xFFFF) return false;
  if (levels != 2 && levels != 17 && levels != 65) return false;
  const UINT form = GGO_GLYPH_INDEX | (levels == 2 ? GGO_BITMAP : levels == 17 ? GGO_GRAY4_BITMAP : GGO_GRAY8_BITMAP);
  const MAT2 toSize = scaled(sizePx / emPx_);
  GLYPHMETRICS box{};
  const DWORD size = GetGlyphOutlineW(device_.get(), glyph, form, &box, 0, nullptr, &toSize);
  if (size == GDI_ERROR || size > kMostGlyphBytes) return false;
  GlyphCoverage made;
  if (size > 0) {
    HeapBuffer<u8> bytes;
    if (!bytes.tryAllocate(size) ||
        GetGlyphOutlineW(device_.get(), glyph, form, &box, size, bytes.get(), &toSize) > size) {
      return false;
    }
    made.left = box.gmptGlyphOrigin.x;
    made.top = -box.gmptGlyphOrigin.y;
    made.width = static_cast<i32>(box.gmBlackBoxX);
    made.height = static_cast<i32>(box.gmBlackBoxY);
    const i32 stride = levels == 2 ? (made.width + 31) / 32 * 4 : (made.width + 3) / 4 * 4;
    if (static_cast<u64>(stride) * static_cast<u32>(made.height) > size) return false;
    if (!made.rows.tryAllocate(static_cast<std::size_t>(made.width) * static_cast<u32>(made.height))) return false;
    u8* to = made.rows.get();
    for (i32 y = 0; y < made.height; ++y) {
      const u8* const row = bytes.get() + static_cast<std::ptrdiff_t>(stride) * y;
      for (i32 x = 0; x < made.width; ++x) {
        const i32 level = levels == 2 ? row[x / 8] >> (7 - x % 8) & 1 : std::min<i32>(row[x], levels - 1);
        *to++ = static_cast<u8>((level * 255 + (levels - 1) / 2) / (levels - 1));
      }
    }
  }
  coverage = std::move(made);
  return true;
}

namespace {

int CALLBACK takeFirst(const LOGFONTW* found, const TEXTMETRICW*, DWORD, LPARAM result) noexcept {
  *reinterpret_cast<LOGFONTW*>(result) = *found;
  return 0;
}

int CALLBACK takeFixed(const LOGFONTW* found, const TEXTMETRICW*, DWORD type, LPARAM result) noexcept {
  const bool isFixed = (found->lfPitchAndFamily & 3) == FIXED_PITCH && (type & TRUETYPE_FONTTYPE);
  if (isFixed && found->lfFaceName[0] != L'@') *reinterpret_cast<LOGFONTW*>(result) = *found;
  return !isFixed;
}

int CALLBACK takeAll(const LOGFONTW* found, const TEXTMETRICW*, DWORD type, LPARAM result) noexcept {
  auto& families = *reinterpret_cast<std::vector<InstalledFamily>*>(result);
  try {
    const bool isNew = std::none_of(families.begin(), families.end(),
                                    [&](const InstalledFamily& one) { return one.name.view() == found->lfFaceName; });
    if ((type & TRUETYPE_FONTTYPE) && found->lfFaceName[0] != L'@' && isNew) {
      families.push_back({WideString(found->lfFaceName), (found->lfPitchAndFamily & 3) == FIXED_PITCH});
    }
    return families.size() < kMostFamilies;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

LOGFONTW ask(const LOGFONTW& wanted, FONTENUMPROCW take) noexcept {
  LOGFONTW found{};
  const gdi::MemoryDevice device(CreateCompatibleDC(nullptr));
  LOGFONTW question = wanted;
  EnumFontFamiliesExW(device.get(), &question, take, reinterpret_cast<LPARAM>(&found), 0);
  return found;
}

}  // namespace

WideString installedFamily(std::wstring_view family) {
  LOGFONTW wanted{};
  if (family.empty() || family.size() >= LF_FACESIZE) return {};
  wanted.lfCharSet = DEFAULT_CHARSET;
  std::copy(family.begin(), family.end(), wanted.lfFaceName);
  return WideString(ask(wanted, takeFirst).lfFaceName);
}

WideString firstInstalled(const wchar_t* families) {
  std::wstring_view left = families;
  while (!left.empty()) {
    const std::size_t end = left.find(L'|');
    if (WideString found = installedFamily(left.substr(0, end)); !found.empty()) return found;
    left = end == std::wstring_view::npos ? std::wstring_view() : left.substr(end + 1);
  }
  return {};
}

WideString anyFixedFamily() {
  LOGFONTW any{};
  any.lfCharSet = DEFAULT_CHARSET;
  return WideString(ask(any, takeFixed).lfFaceName);
}

std::vector<InstalledFamily> installedFamilies() {
  std::vector<InstalledFamily> families;
  LOGFONTW any{};
  any.lfCharSet = DEFAULT_CHARSET;
  const gdi::MemoryDevice device(CreateCompatibleDC(nullptr));
  EnumFontFamiliesExW(device.get(), &any, takeAll, reinterpret_cast<LPARAM>(&families), 0);
  return families;
}

}  // namespace corvix
