// KClassFactoryLocal: the registry of interfaces by name, and the class factory of the library itself.
#pragma once

#include "core/baselib/heap/AddressIndex_p.h"
#include "core/baselib/text/LatelyFound_p.h"
#include "core/baselib/text/NameTable_p.h"
#include "core/xml/Attributes_p.h"
#include "shell/ClassFactory.h"
#include "shell/PluginManager.h"

#include <forward_list>
#include <limits>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace corvix {

// The interfaces under one name, in their order; grows while it is held. New ones are sorted in when somebody looks.
class KInterfaceCollection final : public IBCollection {
  CORVIX_IDENTITY(KInterfaceCollection, 0xD4A2790E, 0x4F135BC8, 0x89BE6023, 0xA7C1F465, IBCollection)

 public:
  // The name stands as long as there are entries.
  KInterfaceCollection(const wchar_t* itsName, u32 itsHash) noexcept : name(itsName), nameHash(itsHash) {}

  i32 count() const noexcept override { return many_ ? static_cast<i32>(many_->all.size()) : only_.entry ? 1 : 0; }
  IPluginInterface* item(i32 index) const noexcept override {
    if (!many_) return index == 0 ? only_.entry.get() : nullptr;
    return many_->item(index);
  }

  // Behind every entry of the same or a smaller order. Throws std::bad_alloc.
  void add(Ref<IPluginInterface> entry, i32 order);

  // From now on equal orders stand by what `stepOf` says of each; new ones stand behind them.
  template <class StepOf>
  void arrange(StepOf stepOf) {
    newStep_ = std::numeric_limits<i32>::max();
    if (only_.entry) only_.step = stepOf(std::as_const(*only_.entry));
    if (!many_) return;
    for (Ordered& one : many_->all) one.step = stepOf(std::as_const(*one.entry));
    many_->sorted = 0;
  }

  void forget(const IPluginModule& module) noexcept;

  const wchar_t* const name;
  const u32 nameHash;
  KInterfaceCollection* sameBucket = nullptr;  // in the registry

 private:
  struct Ordered {
    i32 order;
    i32 step;
    Ref<IPluginInterface> entry;
  };
  struct Many {
    std::vector<Ordered> all;
    std::size_t sorted = 0;  // so many of them, from the first on
    void sort() noexcept;
    IPluginInterface* item(i32 index) noexcept;
  };

  // Most names have one.
  Ordered only_{};
  std::unique_ptr<Many> many_;  // instead of it
  i32 newStep_ = 0;
};

// What the attribute "Order" says; smaller ones come earlier.
i32 interfaceOrder(const IPluginInterface& entry) noexcept;

// The objects that the library itself makes, a row for each interface of its own descriptor. They come from layers
// above this one, which hand the table over while the library is loaded; it stays theirs.
void setLibraryObjects(std::span<const FactoryRow> rows) noexcept;

class KClassFactoryLocal final : public BClassFactory {
  CORVIX_IDENTITY(KClassFactoryLocal, 0x1F96B0A4, 0x47D83E5C, 0xB25A71C9, 0xE60D148F, BClassFactory)

 public:
  ~KClassFactoryLocal() override;

  // The library's own objects; those that there is one of get a further reference.
  IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info& identifier) override;

  void registerInterface(Ref<IPluginInterface> entry);

  // As if none of the module's had been registered.
  void forgetInterfaces(const IPluginModule& module);

  // What a descriptor would say, for good, of an interface that none declares.
  Attributes declare(const wchar_t* name, const stype_info& identifier);

  // The one object of that name, until it is forgotten.
  void setInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance);
  void forgetInstances() noexcept { instances_.clear(); }

  // Null when nothing is registered under exactly this name, which may come in two pieces. Adds no reference.
  KInterfaceCollection* find(std::wstring_view first, std::wstring_view rest = {}) const noexcept;

  // The same for a name as a caller has it.
  KInterfaceCollection* findNamed(const wchar_t* interfaceName) const noexcept {
    if (!interfaceName) return nullptr;
    KInterfaceCollection*& known = known_.at(interfaceName);
    return known && text::saysSame(known->name, interfaceName) ? known : findAnew(interfaceName, known);
  }

  i32 interfaceCount() const noexcept { return static_cast<i32>(all_.size()); }
  IPluginInterface* interfaceAt(i32 index) const noexcept {
    return index >= 0 && index < interfaceCount() ? all_[static_cast<std::size_t>(index)].get() : nullptr;
  }

 private:
  static u32 hashOf(std::wstring_view first, std::wstring_view rest) noexcept;
  KInterfaceCollection* findAnew(const wchar_t* interfaceName, KInterfaceCollection*& known) const noexcept;

  AddressIndex<KInterfaceCollection, &KInterfaceCollection::nameHash> byName_;  // with a reference on each
  mutable text::LatelyFound<KInterfaceCollection*> known_;
  text::NameTable<wchar_t, Ref<IBSmartObject>> instances_;
  std::forward_list<AttributeTable> declared_;
  std::vector<Ref<IPluginInterface>> all_;  // as they were registered
};

}  // namespace corvix

// The library's own, made on the first call, which must come from one thread before others use it.
extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal();
