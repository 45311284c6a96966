// The font creators that modules declare as "FontCreator." and a name.
#pragma once

#include "graphics/fonts/FMFontMachine_p.h"

namespace corvix {

// Tells the font machine of them from now on.
void offerDeclaredFonts() noexcept;

}  // namespace corvix
