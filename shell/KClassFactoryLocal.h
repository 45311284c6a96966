// KClassFactoryLocal: the registry of interfaces by name, and the class factory of the library itself.
#pragma once

#include "core/baselib/text/NameTable.h"
#include "shell/ClassFactory.h"
#include "shell/PluginManager.h"

#include <vector>

namespace corvix {

// The interfaces under one name, in their order; grows while it is held.
class KInterfaceCollection final : public IBCollection {
  CORVIX_IDENTITY(KInterfaceCollection, 0xD4A2790E, 0x4F135BC8, 0x89BE6023, 0xA7C1F465, IBCollection)

 public:
  i32 count() const noexcept override { return static_cast<i32>(interfaces_.size()); }
  IPluginInterface* item(i32 index) const noexcept override {
    return index >= 0 && index < count() ? interfaces_[static_cast<std::size_t>(index)].entry.get() : nullptr;
  }

  // Behind every entry of the same or a smaller order.
  void add(Ref<IPluginInterface> entry, i32 order);

 private:
  struct Ordered {
    i32 order;
    Ref<IPluginInterface> entry;
  };
  std::vector<Ordered> interfaces_;
};

class KClassFactoryLocal final : public BClassFactory {
  CORVIX_IDENTITY(KClassFactoryLocal, 0x1F96B0A4, 0x47D83E5C, 0xB25A71C9, 0xE60D148F, BClassFactory)

 public:
  // The library's own objects; those that there is one of get a further reference.
  IBSmartObject* createObject(const wchar_t* interfaceName, const stype_info& identifier) override;

  void registerInterface(Ref<IPluginInterface> entry);

  // The one object of that name, until it is forgotten.
  void setInstance(const wchar_t* interfaceName, Ref<IBSmartObject> instance);
  void forgetInstances() noexcept { instances_.clear(); }

  // Null when nothing is registered under exactly this name. Adds no reference.
  KInterfaceCollection* find(std::wstring_view interfaceName) const noexcept;

  i32 interfaceCount() const noexcept { return inOrder_.count(); }
  IPluginInterface* interfaceAt(i32 index) const noexcept { return inOrder_.item(index); }

 private:
  text::NameTable<wchar_t, Ref<KInterfaceCollection>> byName_;
  text::NameTable<wchar_t, Ref<IBSmartObject>> instances_;
  KInterfaceCollection inOrder_;  // all of them, as they were registered
};

}  // namespace corvix

// The library's own, made on the first call, which must come from one thread before others use it.
extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal();
