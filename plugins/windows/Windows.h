// What the windows of all plug-ins need of the system's. [shell thread]
#pragma once

#include "core/baselib/system/ForeignCall.h"

#include <string>
#include <string_view>

#include <windows.h>

namespace corvix::windows {

// The module that this code is in.
HINSTANCE ownModule() noexcept;

// Around what a window procedure does: nothing is thrown through the system.
template <class Call>
auto guarded(const wchar_t* place, Call call) noexcept {
  return callForeign(reinterpret_cast<const void*>(&ownModule), place, call);
}

// A class of windows of this module, registered when it is not yet; its name.
const wchar_t* windowClass(const wchar_t* name, WNDPROC procedure, int background = COLOR_BTNFACE);

// Without a font; `id` is that of its WM_COMMAND.
HWND makeChild(HWND parent, const wchar_t* windowClass, const wchar_t* text, DWORD style, int id = 0,
               DWORD exStyle = 0);

// One that not every system has, or whose module is loaded when it is needed first; null when there is none.
template <class Function>
Function lateFunction(const wchar_t* module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(module), name)));
}

std::wstring textOf(HWND control);
std::wstring fileName(const wchar_t* path);
inline std::wstring orEmpty(const wchar_t* text) { return text ? text : L""; }

// For where the system underlines the letter behind "&": none is.
std::wstring withoutMnemonic(std::wstring_view text);

inline int widthOf(const RECT& area) noexcept { return area.right - area.left; }
inline int heightOf(const RECT& area) noexcept { return area.bottom - area.top; }
inline RECT clientOf(HWND window) noexcept {
  RECT area = {};
  GetClientRect(window, &area);
  return area;
}
inline void move(HWND window, const RECT& area) noexcept {
  MoveWindow(window, area.left, area.top, widthOf(area), heightOf(area), TRUE);
}
inline void setFont(HWND window, HFONT font) noexcept {
  SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
}

}  // namespace corvix::windows
