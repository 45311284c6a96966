// IDocumentPanel: a panel beside the documents, declared under a name of the family "Panel." with its caption, the side
// where it stands at first ("left", "right", "top", "bottom"), its size there in 1/96 inch, whether it is shown at
// first, and the condition under which there is something in it:
//
//   <Interface Name="Panel.Pages" GUID="..." Text="Pages" Side="left" Size="180" Shown="true" When="document.paged"/>
//
// It is made when the user sees it first. Nothing here adds a reference. [shell thread]
#pragma once

#include "shell/gui/View.h"

namespace corvix {

class IDocument;

class IDocumentPanel : public IView {
  CORVIX_IDENTITY(IDocumentPanel, 0x4E2B3122, 0xA4C13D14, 0x92A47195, 0x7D71913D, IView)

 public:
  virtual const wchar_t* title() const noexcept = 0;  // instead of Text, unless it is empty
  virtual void setDocument(IDocument* document) = 0;  // the one in front; null: none is open
};

}  // namespace corvix
