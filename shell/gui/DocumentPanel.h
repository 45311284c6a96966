// IDocumentPanel: a panel beside a document. Nothing here adds a reference. [shell thread]
#pragma once

#include "shell/gui/View.h"

namespace corvix {

class IDocument;

class IDocumentPanel : public IView {
  CORVIX_IDENTITY(IDocumentPanel, 0x4E2B3122, 0xA4C13D14, 0x92A47195, 0x7D71913D, IView)

 public:
  virtual const wchar_t* title() const noexcept = 0;
  virtual void setDocument(IDocument* document) = 0;  // null: none is open
};

}  // namespace corvix
