// IDocumentView: a view of one document, declared under a name of the family "DocumentView.". Which documents it is for
// says its attribute For, a condition over the words of the document; of several that fit, the first by Order is made:
//
//   <Interface Name="DocumentView.Paged" GUID="..." sHumanName="Pages" For="document.paged"/>
//
// Words of a document: "document", "document.paged", "document.text", "document.editable", "document.outline",
// "document.readonly", "document.modified", and the name of its format ("DocFormat.Png"). [shell thread]
#pragma once

#include "shell/gui/View.h"

namespace corvix {

class IDocument;

class IDocumentView : public IView {
  CORVIX_IDENTITY(IDocumentView, 0x2DECCD2B, 0x6C8E81F0, 0x64AC03BA, 0x77F747A6, IView)

 public:
  virtual IDocument* document() const noexcept = 0;

  // Once, before `attach`. The document outlives the view. False when it cannot show this one: the next that fits is
  // asked.
  virtual bool setDocument(IDocument* document) = 0;
};

}  // namespace corvix
