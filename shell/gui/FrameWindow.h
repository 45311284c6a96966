// IFrameWindow: a window that holds views. Nothing here adds a reference. [shell thread]
#pragma once

#include "shell/gui/Window.h"

namespace corvix {

class IView;

class IFrameWindow : public IWindow {
  CORVIX_IDENTITY(IFrameWindow, 0x13F01C3A, 0x0BDF4E64, 0x934FD8EB, 0x86CE4BE3, IWindow)

 public:
  virtual IView* activeView() const noexcept = 0;
};

}  // namespace corvix
