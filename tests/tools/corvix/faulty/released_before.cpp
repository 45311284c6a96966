#include "IFaulty.h"

// The Ref lets the object go that it returns.
CORVIX_PLUGIN({L"Faulty.Object", []() -> corvix::IBSmartObject* { return corvix::Ref<Good>::adopt(new Good).get(); }})
