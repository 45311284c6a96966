#include "IFaulty.h"

CORVIX_PLUGIN({L"Faulty.Objekt", corvix::create<Good>})
