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

IPluginInterface* KInterfaceCollection::Many::item(i32 index) noexcept {
  const auto place = static_cast<std::size_t>(index);
  if (index < 0 || place >= all.size()) return nullptr;
  sort();
  return all[place].entry.get();
}

void KInterfaceCollection::add(Ref<IPluginInterface> entry, i32 order) {
  Ordered added{order, newStep_, std::move(entry)};
  if (count() == 0) {
    many_.reset();
    only_ = std::move(added);
    return;
  }
  if (!many_) {
    auto many = std::make_unique<Many>();
    many->all.reserve(4);
    many->all.push_back(std::exchange(only_, {}));
    many_ = std::move(many);
  }
  many_->all.push_back(std::move(added));
}

void KInterfaceCollection::forget(const IPluginModule& module) noexcept {
  const auto isGone = [&](const Ordered& one) { return one.entry->module() == &module; };
  if (only_.entry && isGone(only_)) only_ = {};
  if (!many_) return;
  many_->sort();
  std::erase_if(many_->all, isGone);
  many_->sorted = many_->all.size();
}

// Stable: equal orders stay as they were registered. Needs no memory, only goes faster with some.
void KInterfaceCollection::Many::sort() noexcept {
  if (sorted == all.size()) return;
  const auto before = [](const Ordered& a, const Ordered& b) {
    return a.order != b.order ? a.order < b.order : a.step < b.step;
  };
  const auto middle = all.begin() + static_cast<std::ptrdiff_t>(sorted);
  std::stable_sort(middle, all.end(), before);
  std::inplace_merge(all.begin(), middle, all.end(), before);
  sorted = all.size();
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

Attributes KClassFactoryLocal::declare(const wchar_t* name, const stype_info& identifier) {
  const std::string_view words = identifier.text();
  const std::wstring text(words.begin(), words.end());
  AttributeTable::Builder builder(declared_.emplace_front());
  builder.add(L"Name", name);
  builder.add(L"GUID", text);
  const Attributes attributes = builder.endElement();
  builder.finish();
  return attributes;
}

void KClassFactoryLocal::setInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance) {
  if (Ref<IBSmartObject>* const found = instances_.find(interfaceName)) {
    *found = std::move(instance);
  } else {
    instances_.add(interfaceName, std::move(instance));
  }
}

KClassFactoryLocal::~KClassFactoryLocal() {
  byName_.removeIf([](KInterfaceCollection& one) { return one.release(), true; });
}

void KClassFactoryLocal::registerInterface(Ref<IPluginInterface> entry) {
  const i32 order = interfaceOrder(*entry);
  all_.push_back(entry);
  const wchar_t* const name = entry->name();
  if (KInterfaceCollection* const known = find(name)) {
    known->add(std::move(entry), order);
    return;
  }
  auto made = make<KInterfaceCollection>(name, hashOf(name, {}));
  made->add(std::move(entry), order);
  byName_.enter(made.detach());
}

void KClassFactoryLocal::forgetInterfaces(const IPluginModule& module) {
  std::erase_if(all_, [&](const Ref<IPluginInterface>& entry) { return entry->module() == &module; });
  known_ = {};
  byName_.removeIf([&](KInterfaceCollection& one) {
    one.forget(module);
    return one.count() == 0 && (one.release(), true);
  });
}

u32 KClassFactoryLocal::hashOf(std::wstring_view first, std::wstring_view rest) noexcept {
  return text::stringHash(rest.data(), rest.size(), text::stringHash(first.data(), first.size()),
                          static_cast<u32>(first.size()));
}

KInterfaceCollection* KClassFactoryLocal::find(std::wstring_view first, std::wstring_view rest) const noexcept {
  const u32 hash = hashOf(first, rest);
  const auto isName = [&](const wchar_t* name) {
    return std::wcsncmp(name, first.data(), first.size()) == 0 &&
           std::wcsncmp(name + first.size(), rest.data(), rest.size()) == 0 && !name[first.size() + rest.size()];
  };
  KInterfaceCollection* one = byName_.firstIn(hash);
  while (one && !(one->nameHash == hash && isName(one->name))) one = one->sameBucket;
  return one;
}

KInterfaceCollection* KClassFactoryLocal::findAnew(const wchar_t* interfaceName,
                                                   KInterfaceCollection*& known) const noexcept {
  KInterfaceCollection* const found = find(interfaceName);
  if (found) known = found;
  return found;
}

}  // namespace corvix

corvix::BClassFactory* queryClassFactoryLocal() {
  static corvix::KClassFactoryLocal* const factory = new corvix::KClassFactoryLocal;
  return factory;
}
