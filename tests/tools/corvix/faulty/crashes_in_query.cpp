#include "IFaulty.h"

class Crashing : public Good {
 public:
  void* query(const corvix::stype_info&, corvix::QueryVisitor*) override {
    *static_cast<volatile int*>(nullptr) = 1;
    return nullptr;
  }
};

CORVIX_PLUGIN({L"Faulty.Object", createAsGood<Crashing>})
