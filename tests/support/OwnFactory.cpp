// The class factory of a test program, over every OwnObject in it.
#include "tests/support/OwnPlugin.h"

namespace {

class OwnFactory final : public corvix::BClassFactory {
  corvix::IBSmartObject* createObject(const wchar_t* interfaceName, const corvix::stype_info&) override {
    for (const corvix::FactoryRow& row : corvix::testing_support::OwnObject::all()) {
      if (interfaceName && std::wstring_view(row.interfaceName) == interfaceName) return row.create();
    }
    return nullptr;
  }
};

}  // namespace

extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal() {
  static OwnFactory factory;
  return &factory;
}
