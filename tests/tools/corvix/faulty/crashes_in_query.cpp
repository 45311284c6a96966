#include "IFaulty.h"

class Crashing : public Good {
 public:
  void* query(const corvix::stype_info&, corvix::QueryVisitor*) override {
    crash();
    return nullptr;
  }
};

CORVIX_PLUGIN({L"Faulty.Object", createAsGood<Crashing>})
