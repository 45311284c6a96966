// The inspector: one window a process that shows live what the shell knows. Made under the name "Window.Inspector"; who
// only wants it to open asks for IWindow, or processes the action "Actions.Inspect". It needs a message loop on the
// shell's thread, nothing else of the program. [shell thread]
#pragma once

#include "shell/gui/Window.h"

namespace corvix {

class IInspector : public IWindow {
  CORVIX_IDENTITY(IInspector, 0x29A88E76, 0x2A5D2C00, 0xE288C303, 0x6C3A84E6, IWindow)

 public:
  // `windowHandle` is null while it is not open. `show(true)` opens it, or brings it to the front when it is, also when
  // another object did; `show(false)` closes it. It stays open when the object goes, until the user or the end of the
  // shell closes it.

  // Turns to the tab of this name ("Modules"). False when there is none, or the window is not open.
  virtual bool showTab(const wchar_t* name) = 0;
};

}  // namespace corvix
