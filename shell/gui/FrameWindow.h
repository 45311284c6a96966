// IFrameWindow: a window that holds views of documents, one behind the other, and panels on its four sides. Nothing
// here adds a reference. [shell thread]
#pragma once

#include "shell/gui/Window.h"

namespace corvix {

class IDocument;
class IView;

class IFrameWindow : public IWindow {
  CORVIX_IDENTITY(IFrameWindow, 0x13F01C3A, 0x0BDF4E64, 0x934FD8EB, 0x86CE4BE3, IWindow)

 public:
  // The view of the document in front, whatever has the focus; null when there is none. Setting brings it there; false
  // for one that is not this frame's.
  virtual IView* activeView() const noexcept = 0;
  virtual bool setActiveView(IView* view) = 0;
  virtual i32 viewCount() const noexcept = 0;
  virtual IView* viewAt(i32 index) const noexcept = 0;  // null outside the list

  // The view of the document, in front; made when there is none yet. Null when no plug-in has one for it: the report
  // of IGUIManager says why. Documents that the document manager opens or activates get theirs by themselves.
  virtual IView* openView(IDocument* document) = 0;

  // Takes a view away; its document stays open. False for one that is not this frame's.
  virtual bool closeView(IView* view) = 0;

  // By the name that a plug-in declares. False when nobody does, or it could not be made.
  virtual bool showPanel(const wchar_t* name, bool visible) = 0;
  virtual bool isPanelShown(const wchar_t* name) const noexcept = 0;
};

}  // namespace corvix
