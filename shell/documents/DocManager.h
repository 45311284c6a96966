// IDocManager: the open documents of a program. The library has none of its own: a plug-in brings the manager, under
// the name "IDocManager.Instance". Nothing here adds a reference. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IDocument;

class IDocManager : public IBTransportable {
  CORVIX_IDENTITY(IDocManager, 0x4F78DD0F, 0x3EE11323, 0x0B95C324, 0xDBC9C9C5, IBTransportable)

 public:
  // Null when it cannot be opened. Raises "OnOpenDocument".
  virtual IDocument* openDocument(const wchar_t* location) = 0;
  virtual bool closeDocument(IDocument* document) = 0;
  virtual i32 documentCount() const noexcept = 0;
  virtual IDocument* documentAt(i32 index) const noexcept = 0;  // null outside the list
};

}  // namespace corvix
