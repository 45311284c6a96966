#include "IFaulty.h"

__declspec(dllimport) int absentFunction();

CORVIX_PLUGIN({L"Faulty.Object", [] { return absentFunction() ? corvix::create<Good>() : nullptr; }})
