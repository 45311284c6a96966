#include "IFaulty.h"

class Crashing : public Good {
 public:
  ~Crashing() override { *static_cast<volatile int*>(nullptr) = 1; }
};

CORVIX_PLUGIN({L"Faulty.Object", createAsGood<Crashing>})
