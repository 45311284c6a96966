#include "IFaulty.h"

CORVIX_PLUGIN({L"Something.Else", corvix::create<Good>})
