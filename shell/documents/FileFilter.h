// IFileFilter: a row of the file types that an open dialog ("Dialog.OpenSave") offers. Texts are good as long as the
// object. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IFileFilter : public IBTransportable {
  CORVIX_IDENTITY(IFileFilter, 0x66A63104, 0x9FFE4ADD, 0xBCACBE3C, 0xC4E5F9DE, IBTransportable)

 public:
  virtual const wchar_t* description() const noexcept = 0;
  virtual const wchar_t* pattern() const noexcept = 0;     // "*.pdf;*.fdf"
  virtual const wchar_t* formatName() const noexcept = 0;  // "DocFormat.Pdf"; empty for a row of several formats
};

}  // namespace corvix
