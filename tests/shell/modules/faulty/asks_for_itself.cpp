// While it is being loaded it wants an object of its own.
#include "shell/Plugin.h"
#include "shell/Shell.h"

namespace {

struct AtStart {
  AtStart() { corvix::IShell::getInstance()->pluginManager()->createObject(L"Faulty.asks_for_itself"); }
};

}  // namespace

extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal() {
  const AtStart again;
  static const corvix::FactoryRow rows[] = {{L"Faulty.asks_for_itself", corvix::create<corvix::BSmartObject>}};
  static corvix::TableFactory factory(rows);
  return &factory;
}
