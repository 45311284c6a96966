// KClassFactoryLocal: the registry of interfaces by name, and the class factory of the library itself.
#pragma once

#include "core/baselib/text/LatelyFound_p.h"
#include "core/baselib/text/NameTable_p.h"
#include "core/xml/Attributes_p.h"
#include "shell/ClassFactory.h"
#include "shell/PluginManager.h"

#include <forward_list>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace corvix {

// The interfaces under one name, in their order; grows while it is held. New ones are sorted in when somebody looks.
class KInterfaceCollection final : public IBCollection {
  CORVIX_IDENTITY(KInterfaceCollection, 0xD4A2790E, 0x4F135BC8, 0x89BE6023, 0xA7C1F465, IBCollection)

 public:
  i32 count() const noexcept override { return static_cast<i32>(interfaces_.size()); }
  IPluginInterface* item(i32 index) const noexcept override;

  // Behind every entry of the same or a smaller order.
  void add(Ref<IPluginInterface> entry, i32 order) { interfaces_.push_back({order, newStep_, std::move(entry)}); }

  // From now on equal orders stand by what `stepOf` says of each; new ones stand behind them.
  template <class StepOf>
  void arrange(StepOf stepOf) {
    for (Ordered& one : interfaces_) one.step = stepOf(std::as_const(*one.entry));
    newStep_ = std::numeric_limits<i32>::max();
    sorted_ = 0;
  }

  void forget(const IPluginModule& module) noexcept;

 private:
  struct Ordered {
    i32 order;
    i32 step;
    Ref<IPluginInterface> entry;
  };
  void sort() const noexcept;

  mutable std::vector<Ordered> interfaces_;
  i32 newStep_ = 0;
  mutable std::size_t sorted_ = 0;  // so many of them, from the first on
};

// What the attribute "Order" says; smaller ones come earlier.
i32 interfaceOrder(const IPluginInterface& entry) noexcept;

// The objects that the library itself makes, a row for each interface of its own descriptor. They come from layers
// above this one, which hand the table over while the library is loaded; it stays theirs.
void setLibraryObjects(std::span<const FactoryRow> rows) noexcept;

class KClassFactoryLocal final : public BClassFactory {
  CORVIX_IDENTITY(KClassFactoryLocal, 0x1F96B0A4, 0x47D83E5C, 0xB25A71C9, 0xE60D148F, BClassFactory)

 public:
  // The library's own objects; those that there is one of get a further reference.
  IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info& identifier) override;

  void registerInterface(Ref<IPluginInterface> entry);

  // As if none of the module's had been registered.
  void forgetInterfaces(const IPluginModule& module);

  // Attributes with nothing but a "Name", for good: those of an interface that no descriptor declares.
  Attributes nameAlone(const wchar_t* name);

  // The one object of that name, until it is forgotten.
  void setInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance);
  void forgetInstances() noexcept { instances_.clear(); }

  // Null when nothing is registered under exactly this name, which may come in two pieces. Adds no reference.
  KInterfaceCollection* find(std::wstring_view first, std::wstring_view rest = {}) const noexcept;

  // The same for a name as a caller has it.
  KInterfaceCollection* findNamed(const wchar_t* interfaceName) const noexcept;

  i32 interfaceCount() const noexcept { return static_cast<i32>(all_.size()); }
  IPluginInterface* interfaceAt(i32 index) const noexcept {
    return index >= 0 && index < interfaceCount() ? all_[static_cast<std::size_t>(index)].get() : nullptr;
  }

 private:
  text::NameTable<wchar_t, Ref<KInterfaceCollection>> byName_;
  mutable text::LatelyFound<KInterfaceCollection*> known_;
  text::NameTable<wchar_t, Ref<IBSmartObject>> instances_;
  std::forward_list<AttributeTable> names_;
  std::vector<Ref<IPluginInterface>> all_;  // as they were registered
};

}  // namespace corvix

// The library's own, made on the first call, which must come from one thread before others use it.
extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal();
