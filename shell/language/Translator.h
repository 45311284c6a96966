// IBTranslator: turns texts of the program's own language into the user's. Texts are good as long as the object.
// [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBTranslator : public IBTransportable {
  CORVIX_IDENTITY(IBTranslator, 0x19F2054D, 0xE87BB6A5, 0x9257F156, 0x3F0E425B, IBTransportable)

 public:
  // The text itself when there is no other.
  virtual const wchar_t* translate(const wchar_t* text) const = 0;
};

}  // namespace corvix
