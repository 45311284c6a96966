// What the user's system wants windows to look like: the font of its messages, in the resolution of a window's screen.
#pragma once

#include <windows.h>

namespace corvix::windows {

class Look {
 public:
  // `window` null: the system's main screen.
  explicit Look(HWND window);
  ~Look() { DeleteObject(font_); }
  Look(const Look&) = delete;
  Look& operator=(const Look&) = delete;

  HFONT font() const noexcept { return font_; }

  // From units of 1/96 inch to pixels.
  int scaled(int units) const noexcept { return MulDiv(units, dpi_, 96); }

  // The height of a control with one line of text.
  int lineHeight() const noexcept { return lineHeight_; }

 private:
  int dpi_;
  HFONT font_;
  int lineHeight_;
};

}  // namespace corvix::windows
