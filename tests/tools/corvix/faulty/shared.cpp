#include "IFaulty.h"

// No fault: one object for everybody, with a reference for each.
CORVIX_PLUGIN({L"Faulty.Object", []() -> corvix::IBSmartObject* {
                 static Good* const only = new Good;
                 only->addRef();
                 return only;
               }})
