#include "shell/ShellThread_p.h"

#include <windows.h>

namespace corvix {

namespace {

constexpr UINT kRun = WM_APP;  // wParam: the function, lParam: its argument

LRESULT CALLBACK handle(HWND window, UINT message, WPARAM function, LPARAM argument) noexcept {
  if (message != kRun) return DefWindowProcW(window, message, function, argument);
  try {
    reinterpret_cast<void (*)(void*)>(function)(reinterpret_cast<void*>(argument));
  } catch (...) {  // the system's frames below cannot be passed
  }
  return 0;
}

}  // namespace

// A window of a class of the system's: there is none to take back when the library goes.
ShellThread::ShellThread() noexcept
    : thread_(GetCurrentThreadId()),
      window_(CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
  if (window_) SetWindowLongPtrW(static_cast<HWND>(window_), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(handle));
}

ShellThread::~ShellThread() {
  if (window_) DestroyWindow(static_cast<HWND>(window_));
}

bool ShellThread::run(void (*function)(void*), void* argument) const {
  if (GetCurrentThreadId() == thread_) {
    function(argument);
    return true;
  }
  return window_ && PostMessageW(static_cast<HWND>(window_), kRun, reinterpret_cast<WPARAM>(function),
                                 reinterpret_cast<LPARAM>(argument));
}

}  // namespace corvix
