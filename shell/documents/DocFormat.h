// IDocFormat: a kind of document that can be read and written. [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

class IBStream;
class IDocument;

class IDocFormat : public IBTransportable {
  CORVIX_IDENTITY(IDocFormat, 0x4393A783, 0x54DB94F6, 0x9EC656E2, 0xD4BC1D37, IBTransportable)

 public:
  virtual const wchar_t* name() const noexcept = 0;

  // A document with a reference for the caller; null when the stream holds none of this format.
  virtual IBSmartObject* readDocument(IBStream* stream) = 0;
  virtual bool writeDocument(IDocument* document, IBStream* stream) = 0;
};

}  // namespace corvix
