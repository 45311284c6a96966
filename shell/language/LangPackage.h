// IBLangPackage: the texts of one language. Texts are good as long as the object. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBLangPackage : public IBTransportable {
  CORVIX_IDENTITY(IBLangPackage, 0xCDDC479A, 0xF824C124, 0x256504DE, 0x381803A0, IBTransportable)

 public:
  virtual const wchar_t* languageCode() const noexcept = 0;    // "en", "de"
  virtual const wchar_t* text(u32 number) const noexcept = 0;  // null when there is none
};

}  // namespace corvix
