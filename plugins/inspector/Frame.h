// The inspector's window: tabs, keys, and the timer that keeps the visible tab true. There is at most one; all that it
// has goes with it. [shell thread]
#pragma once

#include "plugins/inspector/Tab.h"

namespace corvix::inspector {

class Frame {
 public:
  // The window, in front; null when it cannot be made.
  static Frame* open();
  static void close();
  static Frame* current() noexcept;

  ~Frame();
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  HWND window() const noexcept { return window_; }
  bool showTab(std::wstring_view name);

 private:
  Frame() : look_(std::make_unique<Look>(nullptr)) {}

  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  static LRESULT CALLBACK takeKeys(int code, WPARAM wparam, LPARAM lparam);
  bool handle(UINT message, WPARAM wparam, LPARAM lparam);
  void make();
  void place();
  void adoptLook();
  void turnTo(std::size_t index);
  void command(WORD id, WORD code);
  Tab& visibleTab() const { return *tabs_[visible_]; }

  HWND window_ = nullptr;
  HWND strip_ = nullptr;
  HWND focus_ = nullptr;  // while another window is active
  HHOOK hook_ = nullptr;
  HACCEL keys_ = nullptr;
  std::unique_ptr<Look> look_;
  std::vector<std::unique_ptr<Tab>> tabs_;
  std::size_t visible_ = 0;
};

}  // namespace corvix::inspector
