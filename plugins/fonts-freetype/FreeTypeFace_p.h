// FreeTypeFace: one font file in memory, read by FreeType, in the library's terms. Nothing of it names the system, so
// that it can be fuzzed. Whatever the file says: FreeType gets at most kMostMemory, a glyph at most kMostReads of the
// file, which bounds parts of parts; 32,767 points; and a mask at most kMostMaskBytes. [one thread at a time]
#pragma once

#include "graphics/fonts/FontSource.h"

#include <memory>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MODULE_H

namespace corvix {

class FreeTypeFace {
 public:
  static constexpr std::size_t kMostMemory = 32u << 20;
  static constexpr u32 kMostReads = 4096;           // for a glyph; a read of a KiB more counts for one more
  static constexpr u32 kMostReadsToOpen = 1 << 20;  // likewise
  static constexpr i32 kMostMaskBytes = 4 << 20;

  // Null when the file is none of TrueType, CFF, Type 1 and CID, is damaged, or memory is short. Of a collection the
  // first font counts.
  static std::unique_ptr<FreeTypeFace> open(HeapBuffer<u8> bytes, u32 count);
  ~FreeTypeFace();
  FreeTypeFace(const FreeTypeFace&) = delete;
  FreeTypeFace& operator=(const FreeTypeFace&) = delete;

  // As the file says it, bytes of ASCII as a rule; null when it does not.
  const char* family() const noexcept { return face_->family_name; }

  FontMetrics metrics() const noexcept;
  u32 glyphCount() const noexcept { return static_cast<u32>(face_->num_glyphs); }
  u32 glyphOf(u32 codePoint) noexcept;
  u32 glyphOfCode(u32 code) noexcept;
  u32 glyphOfName(const char* name) noexcept;
  double advance(u32 glyph) noexcept;
  bool outline(u32 glyph, IGlyphSink& sink) noexcept;  // false, too, when the sink throws
  bool coverage(u32 glyph, double sizePx, i32 levels, GlyphCoverage& coverage) noexcept;

 private:
  FreeTypeFace(HeapBuffer<u8> bytes, u32 count) noexcept;
  bool openWithAnyDriver() noexcept;
  bool load(u32 glyph) noexcept;  // into the face's slot, in units of the font
  double ems(FT_Long units) const noexcept { return static_cast<double>(units) / face_->units_per_EM; }
  FT_CharMap charMap(FT_Encoding encoding) const noexcept;
  u32 glyphIn(FT_CharMap map, u32 code) noexcept;

  // Stands before every block that FreeType has: a ring, so that what it forgets goes with the face.
  struct alignas(2 * sizeof(void*)) Block {
    Block* next;
    Block* previous;
    std::size_t sizeBytes;
  };

  static void* allocate(FT_Memory memory, long sizeBytes) noexcept;
  static void release(FT_Memory memory, void* block) noexcept;
  static void* resize(FT_Memory memory, long formerBytes, long sizeBytes, void* block) noexcept;
  static unsigned long read(FT_Stream stream, unsigned long offset, unsigned char* to, unsigned long count) noexcept;

  HeapBuffer<u8> bytes_;
  std::size_t memoryLeft_ = kMostMemory;
  Block ring_ = {&ring_, &ring_, 0};
  u32 readsLeft_ = kMostReadsToOpen;
  FT_MemoryRec_ memory_{};
  FT_StreamRec stream_{};
  FT_Library library_ = nullptr;
  FT_Face face_ = nullptr;
};

}  // namespace corvix
