// Four pixels at a time; what is left goes through the scalar loops. Compiled with -mstackrealign, as callers align the
// stack to 4 bytes only.
#include "plugins/smooth/Spans_p.h"

#include <cstring>

#include <emmintrin.h>

#define SSE2 __attribute__((target("sse2")))

namespace corvix::smooth {

namespace {

using Words = __m128i;

SSE2 inline Words load(const Pixel* from) noexcept { return _mm_loadu_si128(reinterpret_cast<const Words*>(from)); }
SSE2 inline void store(Pixel* to, Words pixels) noexcept { _mm_storeu_si128(reinterpret_cast<Words*>(to), pixels); }

// `times` for eight words.
SSE2 inline Words timesWords(Words a, Words b) noexcept {
  const Words product = _mm_add_epi16(_mm_mullo_epi16(a, b), _mm_set1_epi16(128));
  return _mm_srli_epi16(_mm_add_epi16(product, _mm_srli_epi16(product, 8)), 8);
}

SSE2 inline Words scaledBy(Words pixels, Words lowFactors, Words highFactors) noexcept {
  const Words zero = _mm_setzero_si128();
  return _mm_packus_epi16(timesWords(_mm_unpacklo_epi8(pixels, zero), lowFactors),
                          timesWords(_mm_unpackhi_epi8(pixels, zero), highFactors));
}

SSE2 inline Words overFour(Words below, Words pixels) noexcept {
  const Words alpha = _mm_srli_epi32(pixels, 24);
  Words rest = _mm_sub_epi32(_mm_set1_epi32(255), alpha);
  rest = _mm_or_si128(rest, _mm_slli_epi32(rest, 16));
  return _mm_add_epi8(pixels, scaledBy(below, _mm_unpacklo_epi32(rest, rest), _mm_unpackhi_epi32(rest, rest)));
}

SSE2 inline Words coveredFour(Words pixels, const u8* covers) noexcept {
  int four;
  std::memcpy(&four, covers, 4);
  const Words zero = _mm_setzero_si128();
  Words words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero);  // a word for each pixel
  words = _mm_unpacklo_epi16(words, words);
  return scaledBy(pixels, _mm_unpacklo_epi32(words, words), _mm_unpackhi_epi32(words, words));
}

SSE2 inline bool areAll(const u8* covers, u32 value) noexcept {
  u32 four;
  std::memcpy(&four, covers, 4);
  return four == value;
}

SSE2 void fill(Pixel* to, i32 count, Pixel pixel) noexcept {
  for (; count > 0 && reinterpret_cast<std::size_t>(to) % 16; --count) *to++ = pixel;
  const Words four = _mm_set1_epi32(static_cast<int>(pixel));
  for (; count >= 16; count -= 16, to += 16) {
    _mm_store_si128(reinterpret_cast<Words*>(to), four);
    _mm_store_si128(reinterpret_cast<Words*>(to + 4), four);
    _mm_store_si128(reinterpret_cast<Words*>(to + 8), four);
    _mm_store_si128(reinterpret_cast<Words*>(to + 12), four);
  }
  for (; count > 0; --count) *to++ = pixel;
}

SSE2 void overOne(Pixel* to, i32 count, Pixel pixel) noexcept {
  const Words four = _mm_set1_epi32(static_cast<int>(pixel));
  for (; count >= 4; count -= 4, to += 4) store(to, overFour(load(to), four));
  kScalarSpans.overOne(to, count, pixel);
}

SSE2 void overOneCovered(Pixel* to, const u8* covers, i32 count, Pixel pixel) noexcept {
  const Words four = _mm_set1_epi32(static_cast<int>(pixel));
  for (; count >= 4; count -= 4, to += 4, covers += 4) {
    if (!areAll(covers, 0)) store(to, overFour(load(to), coveredFour(four, covers)));
  }
  kScalarSpans.overOneCovered(to, covers, count, pixel);
}

SSE2 inline bool areOpaque(Words pixels) noexcept {
  return _mm_movemask_epi8(_mm_cmpeq_epi32(_mm_srli_epi32(pixels, 24), _mm_set1_epi32(255))) == 0xFFFF;
}

SSE2 void overMany(Pixel* to, const Pixel* from, i32 count) noexcept {
  for (; count >= 4; count -= 4, to += 4, from += 4) {
    const Words pixels = load(from);
    store(to, areOpaque(pixels) ? pixels : overFour(load(to), pixels));
  }
  kScalarSpans.overMany(to, from, count);
}

SSE2 void overManyCovered(Pixel* to, const Pixel* from, const u8* covers, i32 count) noexcept {
  for (; count >= 4; count -= 4, to += 4, from += 4, covers += 4) {
    store(to, overFour(load(to), coveredFour(load(from), covers)));
  }
  kScalarSpans.overManyCovered(to, from, covers, count);
}

SSE2 void overColors(Pixel* to, const Color* from, i32 count) noexcept {
  for (; count >= 16; count -= 16, to += 16, from += 16) {
    const Words first = load(from);
    const Words second = load(from + 4);
    const Words third = load(from + 8);
    const Words fourth = load(from + 12);
    if (!areOpaque(_mm_and_si128(_mm_and_si128(first, second), _mm_and_si128(third, fourth)))) {
      kScalarSpans.overColors(to, from, 16);
      continue;
    }
    store(to, first);
    store(to + 4, second);
    store(to + 8, third);
    store(to + 12, fourth);
  }
  kScalarSpans.overColors(to, from, count);
}

SSE2 inline Words timesBytes(Words a, Words b) noexcept {
  const Words zero = _mm_setzero_si128();
  return _mm_packus_epi16(timesWords(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero)),
                          timesWords(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero)));
}

SSE2 void multiply(u8* covers, const u8* by, i32 count) noexcept {
  for (; count >= 16; count -= 16, covers += 16, by += 16) {
    auto* const to = reinterpret_cast<Words*>(covers);
    _mm_storeu_si128(to, timesBytes(_mm_loadu_si128(to), _mm_loadu_si128(reinterpret_cast<const Words*>(by))));
  }
  kScalarSpans.multiply(covers, by, count);
}

SSE2 void multiplyOne(u8* covers, u32 by, i32 count) noexcept {
  const Words all = _mm_set1_epi8(static_cast<char>(by));
  for (; count >= 16; count -= 16, covers += 16) {
    auto* const to = reinterpret_cast<Words*>(covers);
    _mm_storeu_si128(to, timesBytes(_mm_loadu_si128(to), all));
  }
  kScalarSpans.multiplyOne(covers, by, count);
}

}  // namespace

const SpanLoops kSse2Spans = {fill,       overOne,  overOneCovered, overMany, overManyCovered,
                              overColors, multiply, multiplyOne};

}  // namespace corvix::smooth
