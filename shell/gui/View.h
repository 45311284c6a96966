// IView: what shows something in a window of the program: a document (IDocumentView), something beside it
// (IDocumentPanel). What a plug-in declares in one of these families is made, attached once, detached and released by
// the frame that shows it. Nothing here adds a reference. [shell thread]
//
// A view may also be an IActionTarget: of what the user asks for while it is the active one, or has the focus, it is
// asked first. docs/windows.md shows a whole one.
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IFrameWindow;

class IView : public IBTransportable {
  CORVIX_IDENTITY(IView, 0x102E0F4A, 0x0D92A9E6, 0xD3B0681A, 0x769E8F26, IBTransportable)

 public:
  virtual void update() = 0;  // what it shows has changed

  // Makes its window in `parent`, an HWND for it alone: the first child there is kept as large as that, gets the focus
  // in its stead, and is told of WM_SETTINGCHANGE and WM_DPICHANGED_AFTERPARENT. False, with nothing left, when it
  // cannot be made. The frame outlives the view.
  virtual bool attach(IFrameWindow* frame, void* parent) = 0;

  // Takes its window away; its document is still whole. Only `release` comes after it.
  virtual void detach() = 0;

  // What can be said of it now, words with blanks between, for conditions of menus ("view.zoomed"): beside those of
  // its document, which the frame knows. Good until the next call.
  virtual const wchar_t* contextWords() const noexcept = 0;
};

}  // namespace corvix
