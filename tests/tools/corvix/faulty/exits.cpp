#include "IFaulty.h"

#include <cstdlib>

CORVIX_PLUGIN({L"Faulty.Object", []() -> corvix::IBSmartObject* { std::exit(0); }})
