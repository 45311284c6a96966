#include "IFaulty.h"

CORVIX_PLUGIN({L"Faulty.Object", corvix::create<Other>})
