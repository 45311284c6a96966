// IDocument: an open document. Texts are good until it changes. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IDocument : public IBTransportable {
  CORVIX_IDENTITY(IDocument, 0xD1FFB145, 0x94E27ADA, 0xBEB824DF, 0x9E215492, IBTransportable)

 public:
  virtual const wchar_t* location() const noexcept = 0;  // empty for one that was never saved
  virtual const wchar_t* title() const noexcept = 0;
  virtual bool isModified() const noexcept = 0;
};

}  // namespace corvix
