// What the user's settings of the group "FontSystem" make of text: process-wide values, read at every use. [any thread]
#pragma once

#include "graphics/fonts/FontFinder.h"

#include <atomic>
#include <string_view>

namespace corvix {

class IBSettings;

struct FontSettings {
  std::atomic<i32> antiAliasing{3};  // a place in "Fast|Normal|Best", from 1
  std::atomic<u32> kinds{1u << static_cast<u32>(FontKind::Type1)};

  // Levels of a glyph's pixels: 2, 17 or 65.
  i32 levels() const noexcept;

  // Whether fonts of that kind are as wide as a document says when others stand for them.
  bool substitutes(FontKind kind) const noexcept {
    return kinds.load(std::memory_order_relaxed) >> static_cast<u32>(kind) & 1;
  }
};

FontSettings& fontSettings() noexcept;

// "Type1, TrueType": the kinds that a text names, one bit each; "All" names all.
u32 readFontKinds(std::wstring_view text) noexcept;

// Follows the settings from now on.
void watchFontSettings(IBSettings& settings);

}  // namespace corvix
