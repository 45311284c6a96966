#include "graphics/images/WideLoops_p.h"

#include "graphics/images/CmykConversion_p.h"

#include <array>
#include <cstdint>

#include <immintrin.h>

// A function for processors with AVX2, whatever the rest of the file is compiled for; inside of its callers.
#define WIDE __attribute__((target("avx2")))
#define WIDE_PART __attribute__((target("avx2"), always_inline)) inline

namespace corvix::wide {

namespace {

// The compiler's own question; it asks the system, too, whether it keeps these registers.
bool isThere() noexcept {
  static const bool is = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
  }();
  return is;
}

using Row = std::array<std::int8_t, 16>;

WIDE_PART __m256i load(const u8* from) noexcept { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)); }
WIDE_PART void store(u8* to, __m256i value) noexcept { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value); }
WIDE_PART __m256i twice(const Row& row) noexcept {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row.data())));
}
WIDE_PART __m256i inverse(__m256i bytes) noexcept { return _mm256_xor_si256(bytes, _mm256_set1_epi8(-1)); }

// The black of each of eight pixels in place of all its inks.
WIDE_PART __m256i blackOf(__m256i pixels) noexcept {
  static constexpr Row kBlacks = {3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15};
  return _mm256_shuffle_epi8(pixels, twice(kBlacks));
}

// Every byte times the last of its pixel, by 255, rounded.
WIDE_PART __m256i productsWithLast(__m256i pixels) noexcept {
  static constexpr Row kLasts = {3, -1, 3, -1, 7, -1, 7, -1, 11, -1, 11, -1, 15, -1, 15, -1};
  const __m256i last = _mm256_shuffle_epi8(pixels, twice(kLasts));
  const __m256i even = _mm256_and_si256(pixels, _mm256_set1_epi16(0xFF));
  const __m256i odd = _mm256_srli_epi16(pixels, 8);
  const __m256i half = _mm256_set1_epi16(128);
  const __m256i share = _mm256_set1_epi16(257);  // of 65536: exact for products of two bytes
  const __m256i a = _mm256_mulhi_epu16(_mm256_add_epi16(_mm256_mullo_epi16(even, last), half), share);
  const __m256i b = _mm256_mulhi_epu16(_mm256_add_epi16(_mm256_mullo_epi16(odd, last), half), share);
  return _mm256_or_si256(a, _mm256_slli_epi16(b, 8));
}

// What kInkTable adds to an ink, for look-up in registers: of each sixteen inks from one end what the first gets, and
// behind which ones it is one more. `flip`: that end is the last.
struct InkSteps {
  Row flip{};
  Row first{};
  std::array<Row, 3> behind{};
};
constexpr InkSteps inkSteps() noexcept {
  const auto added = [](u32 ink) { return 255 - static_cast<i32>(kByTable[ink]) - static_cast<i32>(ink); };
  InkSteps steps;
  for (u32 block = 0; block < 16; ++block) {
    const u32 flip = added(16 * block + 15) < added(16 * block) ? 15 : 0;
    const auto at = [&](u32 place) { return added(16 * block + (place ^ flip)); };
    steps.flip[block] = static_cast<std::int8_t>(flip);
    steps.first[block] = static_cast<std::int8_t>(at(0));
    std::size_t count = 0;
    for (Row& row : steps.behind) row[block] = 15;
    for (u32 place = 0; place < 15; ++place) {
      for (i32 more = at(place); more < at(place + 1); ++more)
        steps.behind[count++][block] = static_cast<std::int8_t>(place);
    }
  }
  return steps;
}
constexpr InkSteps kInkSteps = inkSteps();

// kByTable of every byte.
WIDE_PART __m256i leftByTable(__m256i inks) noexcept {
  const __m256i low = _mm256_set1_epi8(15);
  const __m256i block = _mm256_and_si256(_mm256_srli_epi16(inks, 4), low);
  const __m256i flip = _mm256_shuffle_epi8(twice(kInkSteps.flip), block);
  const __m256i place = _mm256_xor_si256(_mm256_and_si256(inks, low), flip);
  __m256i added = _mm256_shuffle_epi8(twice(kInkSteps.first), block);
  for (const Row& behind : kInkSteps.behind) {
    const __m256i isBehind = _mm256_cmpgt_epi8(place, _mm256_shuffle_epi8(twice(behind), block));
    added = _mm256_sub_epi8(added, isBehind);
  }
  return _mm256_sub_epi8(inverse(inks), added);
}

// Columns of halftone's tables, for look-up in registers.
template <class Read>
constexpr Row rowOf(Read read) noexcept {
  Row row{};
  for (std::size_t i = 0; i < row.size(); ++i) row[i] = static_cast<std::int8_t>(read(i));
  return row;
}
constexpr Row kSteps = rowOf([](std::size_t i) { return halftone::kPieces[i].step; });
constexpr Row kFirsts = rowOf([](std::size_t i) { return halftone::kPieces[i].first; });
constexpr Row kLowest = rowOf([](std::size_t i) { return halftone::kLowest[i]; });
constexpr Row kDark = rowOf([](std::size_t i) { return halftone::kDark[i]; });

// Of two pixels in each half, the products of their tones with black's.
WIDE_PART __m256i productsWithBlack(__m256i tones) noexcept {
  static constexpr Row kBlacks = {6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15};
  return _mm256_mulhrs_epi16(tones, _mm256_shuffle_epi8(tones, twice(kBlacks)));
}

struct Best {
  WIDE_PART static __m256i mix(__m256i inks) noexcept {
    const __m256i left = inverse(inks);
    const __m256i piece = _mm256_and_si256(_mm256_srli_epi16(left, 4), _mm256_set1_epi8(15));
    // Of the sixteen lowest itself, of others the bit that makes a look-up answer 0.
    const __m256i lowest = _mm256_adds_epu8(left, _mm256_set1_epi8(0x70));
    const __m256i first =
        _mm256_or_si256(_mm256_shuffle_epi8(twice(kFirsts), piece), _mm256_shuffle_epi8(twice(kLowest), lowest));
    const __m256i step = _mm256_shuffle_epi8(twice(kSteps), piece);
    const __m256i unit = _mm256_set1_epi8(halftone::kUnit);
    const __m256i a =
        productsWithBlack(_mm256_maddubs_epi16(_mm256_unpacklo_epi8(left, first), _mm256_unpacklo_epi8(step, unit)));
    const __m256i b =
        productsWithBlack(_mm256_maddubs_epi16(_mm256_unpackhi_epi8(left, first), _mm256_unpackhi_epi8(step, unit)));
    const __m256i lift = _mm256_set1_epi16(halftone::kLift);
    const __m256i levels = _mm256_packus_epi16(_mm256_srai_epi16(_mm256_sub_epi16(a, lift), 6),
                                               _mm256_srai_epi16(_mm256_sub_epi16(b, lift), 6));
    // Beyond the sixteen that are dark some are looked up as if they were, which is less than their level.
    const __m256i place = _mm256_packus_epi16(_mm256_srli_epi16(a, 7), _mm256_srli_epi16(b, 7));
    return _mm256_max_epu8(levels, _mm256_shuffle_epi8(twice(kDark), place));
  }
};

struct Fast {
  WIDE_PART static __m256i mix(__m256i inks) noexcept { return inverse(_mm256_adds_epu8(inks, blackOf(inks))); }
};
struct Normal {
  WIDE_PART static __m256i mix(__m256i inks) noexcept { return productsWithLast(inverse(inks)); }
};
struct Alternate {
  WIDE_PART static __m256i mix(__m256i inks) noexcept { return inverse(_mm256_max_epu8(inks, blackOf(inks))); }
};
struct ByTable {
  WIDE_PART static __m256i mix(__m256i inks) noexcept { return productsWithLast(leftByTable(inks)); }
};

// Eight pixels at a time; what is stored too much, the next eight or the caller's loop replace.
template <class Way>
WIDE std::size_t convert(const u8* cmyk, std::size_t pixels, u8* bgr) noexcept {
  constexpr std::size_t kStored = 10;  // pixels that the registers touch
  static constexpr Row kTurned = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1};
  const __m256i turned = twice(kTurned);
  std::size_t done = 0;
  for (; pixels - done >= kStored; done += 8) {
    const __m256i levels = _mm256_shuffle_epi8(Way::mix(load(cmyk + 4 * done)), turned);
    auto* const to = bgr + 3 * done;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_castsi256_si128(levels));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 12), _mm256_extracti128_si256(levels, 1));
  }
  return done;
}

// A thousandth of what eight pixels weigh, times eight yet to be divided by 125.
WIDE_PART __m256i weigh(const u8* bgr) noexcept {
  static constexpr Row kApart = {0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1};
  const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bgr));
  const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bgr + 12));
  const __m256i pixels =
      _mm256_shuffle_epi8(_mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1), twice(kApart));
  const __m256i blueAndRed = _mm256_and_si256(pixels, _mm256_set1_epi32(0x00FF00FF));
  const __m256i green = _mm256_and_si256(_mm256_srli_epi32(pixels, 8), _mm256_set1_epi32(0xFF));
  const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(blueAndRed, _mm256_set1_epi32(299 << 16 | 114)),
                                       _mm256_madd_epi16(green, _mm256_set1_epi32(587)));
  return _mm256_srli_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(500)), 3);
}

// By 125, exact for what weigh() answers.
WIDE_PART __m256i by125(__m256i values) noexcept {
  constexpr u16 kShare = 33555;  // of 2^22
  return _mm256_srli_epi16(_mm256_mulhi_epu16(values, _mm256_set1_epi16(static_cast<std::int16_t>(kShare))), 6);
}

WIDE std::size_t toGray(const u8* bgr, std::size_t pixels, u8* gray) noexcept {
  constexpr std::size_t kRead = 34;  // pixels that the registers touch
  const __m256i inOrder = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  std::size_t done = 0;
  for (; pixels - done >= kRead; done += 32) {
    const u8* const from = bgr + 3 * done;
    const __m256i a = by125(_mm256_packs_epi32(weigh(from), weigh(from + 24)));
    const __m256i b = by125(_mm256_packs_epi32(weigh(from + 48), weigh(from + 72)));
    store(gray + done, _mm256_permutevar8x32_epi32(_mm256_packus_epi16(a, b), inOrder));
  }
  return done;
}

// The compiler makes of it what the registers of its caller allow.
__attribute__((always_inline)) inline void addRowsHere(const u8* a, const u8* b, const u8* c, const u8* d,
                                                       std::size_t count, u16* sums) noexcept {
  for (std::size_t i = 0; i < count; ++i) sums[i] = static_cast<u16>(sums[i] + a[i] + b[i] + c[i] + d[i]);
}
WIDE void addRowsWide(const u8* const (&rows)[4], std::size_t count, u16* sums) noexcept {
  addRowsHere(rows[0], rows[1], rows[2], rows[3], count, sums);
}

}  // namespace

std::size_t cmykToRgb(const u8* cmyk, std::size_t pixels, CmykMode mode, u8* bgr) noexcept {
  if (!isThere()) return 0;
  switch (mode) {
    case CmykMode::Fast:
      return convert<Fast>(cmyk, pixels, bgr);
    case CmykMode::Normal:
      return convert<Normal>(cmyk, pixels, bgr);
    case CmykMode::Alternate:
      return convert<Alternate>(cmyk, pixels, bgr);
    case CmykMode::ByTable:
      return convert<ByTable>(cmyk, pixels, bgr);
    case CmykMode::Best:
      return convert<Best>(cmyk, pixels, bgr);
  }
  return 0;
}

std::size_t rgbToGray(const u8* bgr, std::size_t pixels, u8* gray) noexcept {
  return isThere() ? toGray(bgr, pixels, gray) : 0;
}

void addRows(const u8* const (&rows)[4], std::size_t count, u16* sums) noexcept {
  if (isThere()) return addRowsWide(rows, count, sums);
  addRowsHere(rows[0], rows[1], rows[2], rows[3], count, sums);
}

}  // namespace corvix::wide
