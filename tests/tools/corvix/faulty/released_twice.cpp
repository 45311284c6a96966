#include "IFaulty.h"

// Hands its one object out without a reference for each.
CORVIX_PLUGIN({L"Faulty.Object", []() -> corvix::IBSmartObject* {
                 static Good* const only = new Good;
                 return only;
               }})
