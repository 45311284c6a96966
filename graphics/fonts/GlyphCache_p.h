// GlyphCache: the coverage of glyphs that were drawn lately, of all fonts. Bounded, and gives itself up when memory is
// short. [any thread]
#pragma once

#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/system/CriticalSection.h"
#include "graphics/fonts/FontSource.h"

#include <memory>
#include <unordered_map>

namespace corvix {

class GlyphCache final : public BHibernatable {
  CORVIX_IDENTITY(GlyphCache, 0xB7F02D64, 0x4C91E83A, 0xA60D357B, 0x5E18C9F2, BHibernatable)

 public:
  struct Key {
    u32 font;  // a number of its own for every font
    u32 glyph;
    u32 size;  // in 64ths of a pixel
    i32 levels;
    friend bool operator==(const Key& a, const Key& b) noexcept {
      return a.font == b.font && a.glyph == b.glyph && a.size == b.size && a.levels == b.levels;
    }
  };
  using Entry = std::shared_ptr<const GlyphCoverage>;

  static constexpr std::size_t kMostBytes = 4u << 20;

  // Null for what is not there.
  Entry find(const Key& key);
  void find(const Key* keys, std::size_t count, Entry* entries);

  // Throws std::bad_alloc. When the cache is full it starts anew.
  Entry add(const Key& key, GlyphCoverage coverage);

  bool hibernate(bool argument) override;
  std::size_t sizeBytes() const noexcept { return sizeBytes_; }

 private:
  struct Hash {
    std::size_t operator()(const Key& key) const noexcept {
      return ((key.font * 0x9E3779B1u + key.glyph) * 0x85EBCA6Bu + key.size) * 0xC2B2AE35u +
             static_cast<u32>(key.levels);
    }
  };

  SCriticalSection lock_;
  std::unordered_map<Key, Entry, Hash> entries_;
  std::size_t sizeBytes_ = 0;
};

// The one of the process.
GlyphCache& glyphCache();

// A number that no other font has.
u32 nextFontNumber() noexcept;

}  // namespace corvix
