// What characters of Unicode mean for text that is not shaped.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

// Control characters, and those that only tell others how to look: joiners, marks of direction, variation selectors.
bool isLeftOut(u32 codePoint) noexcept;

// Stands on the character before it.
bool isMark(u32 codePoint) noexcept;

// The one character that stands for a character and a mark on it; 0 when there is none.
u32 composed(u32 base, u32 mark) noexcept;

}  // namespace corvix
