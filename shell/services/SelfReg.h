// IBSelfReg: enters the program where the system looks for it, for the user alone, and takes it out again. The library
// has one, under the name "IBSelfReg.Instance"; a plug-in that declares the name takes its place. It follows the
// setting General\AssociatePDFWithEditor. [shell thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class IBSelfReg : public IBTransportable {
  CORVIX_IDENTITY(IBSelfReg, 0x003BE43E, 0xAA7EEAC7, 0x9EB9FA08, 0x94C745EA, IBTransportable)

 public:
  // Files that end in ".pdf" open with this program. What they opened with before is kept, in the program's own key.
  // Done again, it does nothing more. False, and everything as before, when the registry does not take it.
  virtual bool registerSelf() = 0;

  // As it was before, where nobody else has come in between: what another program has entered since stays. False when
  // the registry does not let go of something; it may be tried again.
  virtual bool unregisterSelf() = 0;
};

}  // namespace corvix
