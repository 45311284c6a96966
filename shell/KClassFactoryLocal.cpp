#include "shell/KClassFactoryLocal.h"

#include "shell/LibraryObjects.h"

namespace corvix {

IBSmartObject* KClassFactoryLocal::createObject(const wchar_t* interfaceName, const stype_info&) {
  const FactoryRow* const row = findLibraryObject(interfaceName);
  return row ? row->create() : nullptr;
}

void KClassFactoryLocal::registerInterface(Ref<IPluginInterface> entry) {
  inOrder_.add(entry);
  const std::wstring_view name = entry->name();
  KInterfaceCollection* collection = find(name);
  if (!collection) {
    Ref<KInterfaceCollection> made = make<KInterfaceCollection>();
    collection = made.get();
    byName_.add(name, std::move(made));
  }
  collection->add(std::move(entry));
}

KInterfaceCollection* KClassFactoryLocal::find(std::wstring_view interfaceName) const noexcept {
  const Ref<KInterfaceCollection>* const found = byName_.find(interfaceName);
  return found ? found->get() : nullptr;
}

}  // namespace corvix

corvix::BClassFactory* queryClassFactoryLocal() {
  static corvix::KClassFactoryLocal* const factory = new corvix::KClassFactoryLocal;
  return factory;
}
