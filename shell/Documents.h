// What a program's document side offers to plug-ins. The library has no documents of its own: a plug-in brings
// the manager, under the name "IDocManager.Instance". Nothing here adds a reference unless it says so.
// [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IBStream;

class IDocument : public IBTransportable {
  CORVIX_IDENTITY(IDocument, 0xD1FFB145, 0x94E27ADA, 0xBEB824DF, 0x9E215492, IBTransportable)

 public:
  virtual const wchar_t* location() const noexcept = 0;  // empty for one that was never saved
  virtual const wchar_t* title() const noexcept = 0;
  virtual bool isModified() const noexcept = 0;
};

// A kind of document that can be read and written.
class IDocFormat : public IBTransportable {
  CORVIX_IDENTITY(IDocFormat, 0x4393A783, 0x54DB94F6, 0x9EC656E2, 0xD4BC1D37, IBTransportable)

 public:
  virtual const wchar_t* name() const noexcept = 0;

  // A document with a reference for the caller; null when the stream holds none of this format.
  virtual IBSmartObject* readDocument(IBStream* stream) = 0;
  virtual bool writeDocument(IDocument* document, IBStream* stream) = 0;
};

// A row of the file types that an open dialog ("Dialog.OpenSave") offers.
class IFileFilter : public IBTransportable {
  CORVIX_IDENTITY(IFileFilter, 0x66A63104, 0x9FFE4ADD, 0xBCACBE3C, 0xC4E5F9DE, IBTransportable)

 public:
  virtual const wchar_t* description() const noexcept = 0;
  virtual const wchar_t* pattern() const noexcept = 0;  // "*.pdf;*.fdf"
};

class IDocManager : public IBTransportable {
  CORVIX_IDENTITY(IDocManager, 0x4F78DD0F, 0x3EE11323, 0x0B95C324, 0xDBC9C9C5, IBTransportable)

 public:
  // Null when it cannot be opened. Raises "OnOpenDocument".
  virtual IDocument* openDocument(const wchar_t* location) = 0;
  virtual bool closeDocument(IDocument* document) = 0;
  virtual i32 documentCount() const noexcept = 0;
  virtual IDocument* documentAt(i32 index) const noexcept = 0;  // null outside the list
};

// Steps back and forth between states of what the user sees. Found under "IStateHistory.GetInstance".
class IStateHistory : public IBTransportable {
  CORVIX_IDENTITY(IStateHistory, 0x68CCC7EE, 0xB6BE0257, 0xDFEA5BAE, 0xBD07FB12, IBTransportable)

 public:
  virtual bool canGoBack() const noexcept = 0;
  virtual bool canGoForward() const noexcept = 0;
  virtual bool goBack() = 0;
  virtual bool goForward() = 0;
};

}  // namespace corvix
