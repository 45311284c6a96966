#include "IFaulty.h"

#include <stdexcept>

static const int kConfiguration = []() -> int { throw std::runtime_error("no configuration"); }();

CORVIX_PLUGIN({L"Faulty.Object", [] { return kConfiguration ? corvix::create<Good>() : nullptr; }})
