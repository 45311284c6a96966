// IStateHistory: undo and redo, a list of steps for each document. The library has one under the name
// "IStateHistory.GetInstance"; a plug-in that declares the name takes its place. Nothing here adds a reference.
// [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IDocument;
class IStateList;

class IStateHistory : public IBTransportable {
  CORVIX_IDENTITY(IStateHistory, 0x68CCC7EE, 0xB6BE0257, 0xDFEA5BAE, 0xBD07FB12, IBTransportable)

 public:
  // Of the active document's list; false when none is active.
  virtual bool canGoBack() const noexcept = 0;
  virtual bool canGoForward() const noexcept = 0;
  virtual bool goBack() = 0;
  virtual bool goForward() = 0;

  // The document's list, made when it is asked for first; null for no document. It stands until the document goes, if
  // that is a counted object, or `forget`.
  virtual IStateList* listOf(IDocument* document) = 0;
  virtual void setActive(IDocument* document) = 0;  // null: none
  virtual void forget(IDocument* document) = 0;
};

}  // namespace corvix
