#include "IFaulty.h"

class Forgetful : public Good {
 public:
  Forgetful() : kept_(new int[100]) {}
  int* kept_;
};

CORVIX_PLUGIN({L"Faulty.Object", createAsGood<Forgetful>})
