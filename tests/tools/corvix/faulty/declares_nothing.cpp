#include "IFaulty.h"

class EmptyFactory final : public corvix::BClassFactory {
 public:
  corvix::IBSmartObject* createObject(const wchar_t*, const corvix::stype_info&) override { return nullptr; }
};

extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal() {
  static EmptyFactory factory;
  return &factory;
}
