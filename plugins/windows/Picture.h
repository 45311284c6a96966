// Pictures of windows, taken from the windows themselves: no screen is needed.
#pragma once

#include "shell/PluginManager.h"

#include <windows.h>

namespace corvix::windows {

// The inside of one window.
bool saveInside(IPluginManager& manager, HWND window, const wchar_t* pngFile);

// A whole window with its border, and over it what else of this thread is open: menus, dialogs.
bool saveWithAllOver(IPluginManager& manager, HWND window, const wchar_t* pngFile);

}  // namespace corvix::windows
