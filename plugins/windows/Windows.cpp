#include "plugins/windows/Windows.h"

namespace corvix::windows {

HINSTANCE ownModule() noexcept {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&ownModule), &module);
  return module;
}

const wchar_t* windowClass(const wchar_t* name, WNDPROC procedure, int background) {
  WNDCLASSW windows = {};
  windows.lpfnWndProc = procedure;
  windows.hInstance = ownModule();
  windows.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  windows.hIcon = LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_APPLICATION));
  windows.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(background + 1));
  windows.lpszClassName = name;
  RegisterClassW(&windows);
  return name;
}

HWND makeChild(HWND parent, const wchar_t* windowClass, const wchar_t* text, DWORD style, int id, DWORD exStyle) {
  return CreateWindowExW(exStyle, windowClass, text, WS_CHILD | style, 0, 0, 0, 0, parent,
                         reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ownModule(), nullptr);
}

std::wstring textOf(HWND control) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(control)) + 1, L'\0');
  text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), static_cast<int>(text.size()))));
  return text;
}

std::wstring withoutMnemonic(std::wstring_view text) {
  std::wstring shown;
  for (const wchar_t letter : text) shown.append(letter == L'&' ? 2 : 1, letter);
  return shown;
}

std::wstring fileName(const wchar_t* path) {
  const std::wstring text = path;
  return text.substr(text.find_last_of(L"\\/") + 1);
}

}  // namespace corvix::windows
