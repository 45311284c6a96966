// IGUIManager: what a program's user interface offers to plug-ins. The library has none of its own: the plug-in gui
// brings it, under the name "IGUIManager.Instance". docs/windows.md shows programs, views and panels around it. Nothing
// here adds a reference unless it says so. [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IBReport;
class IFrameWindow;
class IMsgTarget;

class IGUIManager : public IBTransportable {
  CORVIX_IDENTITY(IGUIManager, 0x81823C83, 0x024CB756, 0x8DAF0310, 0xB36D6716, IBTransportable)

 public:
  // The frame that was made first of those that are open; null when there is none.
  virtual IFrameWindow* mainWindow() const noexcept = 0;

  // A frame with the menu "Menu.Main" and the toolbar "Toolbar.Main", where the user left it; what it keeps is below
  // its name in the program's key. Shown by `show`, gone when it is closed. Null, and why in the report, when there is
  // no display, or memory is short.
  virtual IFrameWindow* createFrame(const wchar_t* name) = 0;

  // As IMenuManager::menu: with a reference that the caller owns, null when there is none.
  virtual IBSmartObject* menu(const wchar_t* name) = 0;

  // The program's message loop: keys of menus, message targets, tasks of the shell's thread, refresh of actions when
  // nothing else is to be done. Returns when the last frame is closed, with 0, or what `quit` says.
  virtual i32 run() = 0;
  virtual void quit(i32 code) = 0;

  // `target` gets the messages of this HWND before the window does, until it is removed or the window goes. False for
  // what is no window of this thread, and for a target that is there. What it throws, or a crash, ends at the call.
  virtual bool addMessageTarget(void* window, IMsgTarget* target) = 0;
  virtual bool removeMessageTarget(void* window, IMsgTarget* target) = 0;

  // Something has changed that actions or conditions depend on: menus, toolbars and titles are brought up to date when
  // nothing else is to be done. After actions, keys and clicks that happens by itself.
  virtual void refreshActions() = 0;

  // What went wrong with windows: views that could not be made or were closed because they failed.
  virtual IBReport* report() noexcept = 0;
};

}  // namespace corvix
