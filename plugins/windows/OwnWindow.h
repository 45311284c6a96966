// OwnWindow: base of a window with a class of its own. Nothing is thrown through the system. [shell thread]
#pragma once

#include "plugins/windows/Windows.h"

namespace corvix::windows {

class OwnWindow {
 public:
  OwnWindow(const OwnWindow&) = delete;
  OwnWindow& operator=(const OwnWindow&) = delete;
  HWND window() const noexcept { return window_; }

 protected:
  OwnWindow() = default;
  ~OwnWindow() { close(); }

  // A child of the parent; false when it cannot be made.
  bool open(HWND parent, const wchar_t* className, DWORD style, DWORD exStyle = 0, int background = COLOR_BTNFACE);
  void close() {
    if (window_) DestroyWindow(window_);
  }

  // True when it has dealt with the message; `result` is 0 unless it is set.
  virtual bool handle(UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) = 0;

 private:
  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

  HWND window_ = nullptr;
};

}  // namespace corvix::windows
