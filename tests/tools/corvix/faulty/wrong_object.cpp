#include "IFaulty.h"

CORVIX_PLUGIN({L"Faulty.Object", corvix::create<Other>}, {L"Faulty.Other", corvix::create<Good>})
