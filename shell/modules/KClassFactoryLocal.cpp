#include "shell/modules/KClassFactoryLocal_p.h"

#include "core/baselib/objects/Singleton.h"
#include "core/baselib/text/NumberText.h"

#include <algorithm>

namespace corvix {

namespace {

// "Hight", with the same value as "Low", is what descriptors say: both the word and the number stay.
constexpr struct {
  std::wstring_view word;
  i32 order;
} kOrderWords[] = {{L"Low", -100}, {L"Default", 0}, {L"Hight", -100}};

constinit std::span<const FactoryRow> libraryObjects;

}  // namespace

i32 interfaceOrder(const IPluginInterface& entry) noexcept {
  const wchar_t* const text = entry.attribute(L"Order");
  if (!text) return 0;
  for (const auto& row : kOrderWords) {
    if (equalInAnyCase(text, row.word)) return row.order;
  }
  return text::readInteger(text);
}

void setLibraryObjects(std::span<const FactoryRow> rows) noexcept { libraryObjects = rows; }

IPluginInterface* KInterfaceCollection::item(i32 index) const noexcept {
  if (index < 0 || index >= count()) return nullptr;
  sort();
  return interfaces_[static_cast<std::size_t>(index)].entry.get();
}

void KInterfaceCollection::forget(const IPluginModule& module) noexcept {
  sort();
  std::erase_if(interfaces_, [&](const Ordered& one) { return one.entry->module() == &module; });
  sorted_ = interfaces_.size();
}

// Stable: equal orders stay as they were registered. Needs no memory, only goes faster with some.
void KInterfaceCollection::sort() const noexcept {
  if (sorted_ == interfaces_.size()) return;
  const auto before = [](const Ordered& a, const Ordered& b) {
    return a.order != b.order ? a.order < b.order : a.step < b.step;
  };
  const auto middle = interfaces_.begin() + static_cast<std::ptrdiff_t>(sorted_);
  std::stable_sort(middle, interfaces_.end(), before);
  std::inplace_merge(interfaces_.begin(), middle, interfaces_.end(), before);
  sorted_ = interfaces_.size();
}

IBSmartObject* KClassFactoryLocal::createObject(const wchar_t* interfaceName, const stype_info&) {
  if (!interfaceName) return nullptr;
  const Ref<IBSmartObject>* const instance = instances_.find(interfaceName);
  if (instance) return Ref<IBSmartObject>(*instance).detach();
  for (const FactoryRow& row : libraryObjects) {
    if (std::wstring_view(interfaceName) != row.interfaceName) continue;
    auto made = Ref<IBSmartObject>::adopt(row.create());
    if (corvix::query<IBSingleton>(made.get())) setInstance(interfaceName, made);
    return made.detach();
  }
  return nullptr;
}

Attributes KClassFactoryLocal::nameAlone(const wchar_t* name) {
  AttributeTable::Builder builder(names_.emplace_front());
  builder.add(L"Name", name);
  return builder.endElement();
}

void KClassFactoryLocal::setInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance) {
  if (Ref<IBSmartObject>* const found = instances_.find(interfaceName)) {
    *found = std::move(instance);
  } else {
    instances_.add(interfaceName, std::move(instance));
  }
}

void KClassFactoryLocal::registerInterface(Ref<IPluginInterface> entry) {
  const i32 order = interfaceOrder(*entry);
  all_.push_back(entry);
  const std::wstring_view name = entry->name();
  Ref<KInterfaceCollection>* collection = byName_.find(name);
  if (!collection) collection = &byName_.add(name, make<KInterfaceCollection>());
  (*collection)->add(std::move(entry), order);
}

void KClassFactoryLocal::forgetInterfaces(const IPluginModule& module) {
  std::erase_if(all_, [&](const Ref<IPluginInterface>& entry) { return entry->module() == &module; });
  byName_.forEach([&](std::wstring_view, Ref<KInterfaceCollection>& collection) { collection->forget(module); });
}

KInterfaceCollection* KClassFactoryLocal::find(std::wstring_view first, std::wstring_view rest) const noexcept {
  const auto isSame = [](const wchar_t* a, std::wstring_view b) {
    return std::memcmp(a, b.data(), b.size() * sizeof(wchar_t)) == 0;
  };
  const u32 firstLength = static_cast<u32>(first.size());
  const u32 hash =
      text::stringHash(rest.data(), rest.size(), text::stringHash(first.data(), first.size()), firstLength);
  const Ref<KInterfaceCollection>* const found =
      byName_.find(hash, firstLength + static_cast<u32>(rest.size()),
                   [&](const wchar_t* name) { return isSame(name, first) && isSame(name + firstLength, rest); });
  return found && (*found)->count() ? found->get() : nullptr;
}

KInterfaceCollection* KClassFactoryLocal::findNamed(const wchar_t* interfaceName) const noexcept {
  if (!interfaceName) return nullptr;
  KInterfaceCollection*& known = known_.at(interfaceName);
  if (known && known->count() && text::saysSame(known->item(0)->name(), interfaceName)) return known;
  KInterfaceCollection* const found = find(interfaceName);
  if (found) known = found;
  return found;
}

}  // namespace corvix

corvix::BClassFactory* queryClassFactoryLocal() {
  static corvix::KClassFactoryLocal* const factory = new corvix::KClassFactoryLocal;
  return factory;
}
