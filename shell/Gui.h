// What a program's user interface offers to plug-ins. The library has none of its own: a plug-in brings the
// manager, under the name "IGUIManager.Instance". Nothing here adds a reference. [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IDocument;

// Receives messages of the system's windows.
class IMsgTarget : public IBTransportable {
  CORVIX_IDENTITY(IMsgTarget, 0xB9A77AF0, 0x278DE3EC, 0xD3DA2F15, 0x3926C617, IBTransportable)

 public:
  // True when the message was taken; `result` is then what the system is answered.
  virtual bool onMessage(u32 message, std::uintptr_t wParam, std::intptr_t lParam, std::intptr_t& result) = 0;
};

class IView : public IBTransportable {
  CORVIX_IDENTITY(IView, 0x102E0F4A, 0x0D92A9E6, 0xD3B0681A, 0x769E8F26, IBTransportable)

 public:
  virtual void update() = 0;  // what it shows has changed
};

// A view with a window of the system, an HWND.
class IHWNDView : public IView {
  CORVIX_IDENTITY(IHWNDView, 0x19440E72, 0x1A6A71DD, 0xA486A522, 0xB84F41DC, IView)

 public:
  virtual void* windowHandle() const noexcept = 0;
};

class IDocumentView : public IView {
  CORVIX_IDENTITY(IDocumentView, 0x2DECCD2B, 0x6C8E81F0, 0x64AC03BA, 0x77F747A6, IView)

 public:
  virtual IDocument* document() const noexcept = 0;
};

// A panel beside a document.
class IDocumentPanel : public IView {
  CORVIX_IDENTITY(IDocumentPanel, 0x4E2B3122, 0xA4C13D14, 0x92A47195, 0x7D71913D, IView)

 public:
  virtual const wchar_t* title() const noexcept = 0;
  virtual void setDocument(IDocument* document) = 0;  // null: none is open
};

class IWindow : public IBTransportable {
  CORVIX_IDENTITY(IWindow, 0x5B5B035E, 0xF87962AF, 0xE65AB9FB, 0x4E913729, IBTransportable)

 public:
  virtual void* windowHandle() const noexcept = 0;
  virtual void show(bool visible) = 0;
};

class IFrameWindow : public IWindow {
  CORVIX_IDENTITY(IFrameWindow, 0x13F01C3A, 0x0BDF4E64, 0x934FD8EB, 0x86CE4BE3, IWindow)

 public:
  virtual IView* activeView() const noexcept = 0;
};

class IMenuItem : public IBTransportable {
  CORVIX_IDENTITY(IMenuItem, 0xC447A503, 0xA7DF3A99, 0xD2EF20E6, 0x6027B32D, IBTransportable)

 public:
  virtual const wchar_t* text() const noexcept = 0;
  virtual const wchar_t* actionName() const noexcept = 0;  // "Actions." and words; empty for a sub-menu
};

class IGUIManager : public IBTransportable {
  CORVIX_IDENTITY(IGUIManager, 0x81823C83, 0x024CB756, 0x8DAF0310, 0xB36D6716, IBTransportable)

 public:
  virtual IFrameWindow* mainWindow() const noexcept = 0;
};

}  // namespace corvix
