// Keys as menus name them ("Ctrl+Shift+PgUp") and as the keyboard sends them, as one number each.
#pragma once

#include "core/baselib/Api.h"
#include "plugins/windows/Translated.h"

#include <windows.h>

namespace corvix::gui {

using Stroke = u32;  // the system's code of the key, modifiers above it; 0: none

constexpr Stroke kControl = 0x10000, kAlt = 0x20000, kShift = 0x40000;

// Of an IMenuItem::key.
Stroke strokeNamed(const wchar_t* key);

// As it is written on the user's keyboard: "Strg+Umschalt+Bild auf".
std::wstring shownKey(const windows::Translation& texts, const wchar_t* key);

// Whether it is nobody's but the user's, whatever menus claim: what writes a letter where letters are written, what
// closes the window and opens its menu.
bool isReserved(Stroke stroke, HWND focus);

// Of a key that is pressed now; those of the number pad count as the others.
Stroke strokePressed(WPARAM key);

}  // namespace corvix::gui
