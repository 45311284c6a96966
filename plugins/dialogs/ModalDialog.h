// ModalDialog: a dialog of the system's whose controls are made by code. Return is its first button, Escape cancels;
// its owner waits. Sizes are in 1/96 inch. [shell thread]
#pragma once

#include "plugins/windows/Look.h"
#include "plugins/windows/Windows.h"

#include <optional>
#include <vector>

namespace corvix::dialogs {

// What dialogs stand in front of: the window that the user is in.
HWND ownerOfDialogs();

class ModalDialog {
 public:
  ModalDialog(const ModalDialog&) = delete;
  ModalDialog& operator=(const ModalDialog&) = delete;

  // IDOK or IDCANCEL; -1 when it cannot be shown.
  int run(const std::wstring& title, int width, int height, bool isSizeable);

 protected:
  ModalDialog() = default;
  ~ModalDialog() = default;

  virtual void make() = 0;
  virtual void place(RECT area) = 0;  // above the row of buttons
  virtual void adopt() {}             // after `look` has become another; fonts are set
  virtual bool command(int id, int code);
  virtual bool notified(const NMHDR&) { return false; }

  HWND window() const noexcept { return window_; }
  const windows::Look& look() const noexcept { return *look_; }
  // `id` is none of the system's for buttons (IDOK and those behind it).
  HWND add(const wchar_t* windowClass, const wchar_t* text, DWORD style, int id = -1, DWORD exStyle = 0);
  void addButton(const wchar_t* text, int id);  // in the row, from left to right
  void end(int answer) { EndDialog(window_, answer); }

 private:
  static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  bool begin(HWND window);
  void measure();
  void changeResolution(const RECT& wanted);
  void arrange();

  HWND window_ = nullptr;
  std::optional<windows::Look> look_;  // in one place as long as the dialog
  std::wstring title_;
  int width_ = 0, height_ = 0, leastWidth_ = 0, leastHeight_ = 0;
  std::vector<HWND> buttons_;
};

}  // namespace corvix::dialogs
