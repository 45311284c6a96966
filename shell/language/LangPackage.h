// IBLangPackage: the texts of one language. Who has one declares an object of it as "LangPackage." and the code of the
// language; what has no code of its own is better a file of texts (docs/languages.md). Texts are good as long as the
// object. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBLangPackage : public IBTransportable {
  CORVIX_IDENTITY(IBLangPackage, 0xCDDC479A, 0xF824C124, 0x256504DE, 0x381803A0, IBTransportable)

 public:
  virtual const wchar_t* languageCode() const noexcept = 0;  // "de", "de-AT"

  // Null when there is none. `context` says where the text stands, when it can mean two things; else it is empty.
  virtual const wchar_t* text(const wchar_t* context, const wchar_t* source) const = 0;
};

}  // namespace corvix
