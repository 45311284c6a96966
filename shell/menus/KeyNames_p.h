// The keys that a menu's template can name besides letters, digits and F1 to F24; the descriptor compiler knows them by
// this table, too.
#pragma once

#include <string_view>

namespace corvix {

inline constexpr std::string_view kModifierNames[] = {"Ctrl", "Alt", "Shift"};

inline constexpr std::string_view kKeyNames[] = {
    "Backspace", "Comma", "Del",  "Down", "End",    "Enter", "Esc",   "Home",  "Ins", "Left",
    "Minus",     "PgDn",  "PgUp", "Plus", "Period", "Right", "Slash", "Space", "Tab", "Up",
};

inline constexpr int kFunctionKeys = 24;

}  // namespace corvix
