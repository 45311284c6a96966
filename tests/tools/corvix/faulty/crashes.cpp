#include "IFaulty.h"

class Crashing : public Good {
 public:
  Crashing() { crash(); }
};

CORVIX_PLUGIN({L"Faulty.Object", createAsGood<Crashing>}, {L"Faulty.Other", corvix::create<Other>})
