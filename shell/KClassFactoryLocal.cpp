#include "shell/KClassFactoryLocal.h"

#include "core/baselib/text/NumberText.h"
#include "core/xml/Attributes.h"
#include "shell/LibraryObjects.h"

#include <algorithm>

namespace corvix {

namespace {

// "Hight", with the same value as "Low", is what descriptors say: both the word and the number stay.
constexpr struct {
  std::wstring_view word;
  i32 order;
} kOrderWords[] = {{L"Low", -100}, {L"Default", 0}, {L"Hight", -100}};

i32 orderOf(const wchar_t* text) noexcept {
  if (!text) return 0;
  for (const auto& row : kOrderWords) {
    if (equalInAnyCase(text, row.word)) return row.order;
  }
  return text::readInteger(text);
}

}  // namespace

void KInterfaceCollection::add(Ref<IPluginInterface> entry, i32 order) {
  const auto behind = std::upper_bound(interfaces_.begin(), interfaces_.end(), order,
                                       [](i32 wanted, const Ordered& one) { return wanted < one.order; });
  interfaces_.insert(behind, {order, std::move(entry)});
}

IBSmartObject* KClassFactoryLocal::createObject(const wchar_t* interfaceName, const stype_info&) {
  const Ref<IBSmartObject>* const instance = instances_.find(interfaceName);
  if (instance) return Ref<IBSmartObject>(*instance).detach();
  const FactoryRow* const row = findLibraryObject(interfaceName);
  return row ? row->create() : nullptr;
}

void KClassFactoryLocal::setInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance) {
  if (Ref<IBSmartObject>* const found = instances_.find(interfaceName)) {
    *found = std::move(instance);
  } else {
    instances_.add(interfaceName, std::move(instance));
  }
}

void KClassFactoryLocal::registerInterface(Ref<IPluginInterface> entry) {
  const i32 order = orderOf(entry->attribute(L"Order"));
  inOrder_.add(entry, 0);
  const std::wstring_view name = entry->name();
  KInterfaceCollection* collection = find(name);
  if (!collection) {
    Ref<KInterfaceCollection> made = make<KInterfaceCollection>();
    collection = made.get();
    byName_.add(name, std::move(made));
  }
  collection->add(std::move(entry), order);
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
