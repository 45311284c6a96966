// The peer of FrameProbe.cpp: the same window and controls, made by the system's calls alone.
#include "bench/ProcessTime.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <commctrl.h>

namespace {

constexpr int kRows = 102;  // of the menu of tools: those of a hundred plug-ins, a line, "Options..."
HWND window, toolbar, status;

HWND add(const wchar_t* windowClass, DWORD style) {
  return CreateWindowExW(0, windowClass, L"", WS_CHILD | style, 0, 0, 0, 0, window, nullptr, GetModuleHandleW(nullptr),
                         nullptr);
}

void fill(HMENU menu) {
  while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
  }
  for (int i = 0; i < kRows; ++i)
    AppendMenuW(menu, MF_STRING, static_cast<UINT_PTR>(i) + 1, L"&Work for a while\tCtrl+F9");
}

void makeMenus() {
  const HMENU bar = CreateMenu();
  for (const wchar_t* const name : {L"&File", L"&Edit", L"&View", L"&Tools", L"&Help"})
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(CreatePopupMenu()), name);
  SetMenu(window, bar);
}

void makeTools() {
  toolbar = add(TOOLBARCLASSNAMEW, WS_VISIBLE | TBSTYLE_FLAT | TBSTYLE_LIST | TBSTYLE_TOOLTIPS | CCS_NODIVIDER |
                                       CCS_NOPARENTALIGN | CCS_NORESIZE);
  SendMessageW(toolbar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
  const HIMAGELIST images = ImageList_Create(16, 16, ILC_COLOR32 | ILC_MASK, 4, 4);
  SendMessageW(toolbar, TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images));
  for (int i = 0; i < 4; ++i) {
    TBBUTTON button = {};
    button.iBitmap = ImageList_AddIcon(images, LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_APPLICATION)));
    button.idCommand = i + 1;
    button.fsState = TBSTATE_ENABLED;
    button.iString = reinterpret_cast<INT_PTR>(L"Open");
    SendMessageW(toolbar, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&button));
  }
}

LRESULT CALLBACK procedure(HWND one, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_INITMENUPOPUP) return fill(reinterpret_cast<HMENU>(wparam)), 0;
  if (message == WM_SIZE) {
    RECT area = {};
    GetClientRect(one, &area);
    MoveWindow(toolbar, 0, 0, area.right, 26, TRUE);
    MoveWindow(status, 0, area.bottom - 24, area.right, 24, TRUE);
  }
  return DefWindowProcW(one, message, wparam, lparam);
}

double menuNs(int place, int rounds) {
  const HMENU menu = GetSubMenu(GetMenu(window), place);
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < rounds; ++i) SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), place);
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / rounds;
}

}  // namespace

int main(int, char** arguments) {
  const INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_TAB_CLASSES | ICC_BAR_CLASSES | ICC_PROGRESS_CLASS};
  InitCommonControlsEx(&controls);
  WNDCLASSW windows = {};
  windows.lpfnWndProc = procedure;
  windows.hInstance = GetModuleHandleW(nullptr);
  windows.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_APPWORKSPACE + 1);
  windows.lpszClassName = L"CorvixBareProbe";
  RegisterClassW(&windows);
  window = CreateWindowExW(0, windows.lpszClassName, L"Bare", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                           CW_USEDEFAULT, 900, 640, nullptr, nullptr, windows.hInstance, nullptr);
  if (!window) return 1;
  makeMenus();
  makeTools();
  add(WC_TABCONTROLW, 0);  // of documents, and what closes one
  add(L"BUTTON", 0);
  status = add(STATUSCLASSNAMEW, WS_VISIBLE | SBARS_SIZEGRIP | CCS_NOPARENTALIGN | CCS_NORESIZE);
  add(PROGRESS_CLASSW, 0);
  add(L"BUTTON", 0);
  ShowWindow(window, SW_SHOWNORMAL);
  UpdateWindow(window);
  const double started = corvix::bench::processNs();
  const bool isMenu = arguments[1] && !std::strcmp(arguments[1], "menu");
  std::printf("%.0f\n", isMenu ? menuNs(3, 200) : started);
  return 0;
}
