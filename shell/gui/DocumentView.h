// IDocumentView: a view of one document. Nothing here adds a reference. [shell thread]
#pragma once

#include "shell/gui/View.h"

namespace corvix {

class IDocument;

class IDocumentView : public IView {
  CORVIX_IDENTITY(IDocumentView, 0x2DECCD2B, 0x6C8E81F0, 0x64AC03BA, 0x77F747A6, IView)

 public:
  virtual IDocument* document() const noexcept = 0;
};

}  // namespace corvix
