#include "plugins/windows/OwnWindow.h"

namespace corvix::windows {

bool OwnWindow::open(HWND parent, const wchar_t* className, DWORD style, DWORD exStyle, int background) {
  CreateWindowExW(exStyle, windowClass(className, &OwnWindow::procedure, background), L"", WS_CHILD | style, 0, 0, 0, 0,
                  parent, nullptr, ownModule(), this);
  return window_ != nullptr;
}

LRESULT CALLBACK OwnWindow::procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    auto* const made = static_cast<OwnWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lparam)->lpCreateParams);
    made->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
  }
  auto* const self = reinterpret_cast<OwnWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self && message == WM_NCDESTROY) {
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    self->window_ = nullptr;
    return 0;
  }
  LRESULT result = 0;
  const bool isDone =
      self && guarded(L"a window message", [&] { return self->handle(message, wparam, lparam, result); });
  return isDone ? result : DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace corvix::windows
