// What modules declare under one name: an object of each, made one after the other, asked for an interface, visited,
// and released. Everything there is foreign code: what it throws is named in the log, and the next one has its turn.
#pragma once

#include "core/baselib/system/ForeignCall.h"
#include "shell/PluginManager.h"

namespace corvix {

// False ends the walk. The visitor keeps the object by sharing it.
template <class Interface, class Visit>
bool visitDeclared(IPluginInterface& entry, const wchar_t* name, Visit& visit) {
  auto object = Ref<IBSmartObject>::adopt(entry.createObject());
  if (!object) return true;
  const void* const code = codeOf(object.get());
  bool goesOn = true;
  callForeign(code, name, [&] {
    if (Interface* const wanted = query<Interface>(object.get())) {
      goesOn = visit(*wanted, entry);
    } else if (ICreationReport* const report = query<ICreationReport>(&entry)) {
      report->reject((std::wstring(L"it is no ") + Interface::classNameW()).c_str());
    }
  });
  callForeign(code, name, [&] { object.reset(); });
  return goesOn;
}

// Each entry once, in their order, until a visit answers false. A visit may have more modules registered: what comes
// in behind the place that is reached is visited as well, what comes in before it moves the others.
template <class Entries, class Visit>
void forEachEntry(Entries& entries, Visit visit) {
  for (i32 i = 0; i < entries.count(); ++i) {
    auto* const item = entries.item(i);
    IPluginInterface* found;
    if constexpr (std::is_convertible_v<decltype(item), IPluginInterface*>) {
      found = item;
    } else {
      found = query<IPluginInterface>(item);
    }
    const auto entry = Ref<IPluginInterface>::share(found);
    if (!visit(*entry)) return;
    while (i < entries.count() && entries.item(i) != item) ++i;
  }
}

template <class Interface, class Visit>
void forEachDeclared(IPluginManager& manager, const wchar_t* name, Visit visit) {
  const auto entries = Ref<IBCollection>::adopt(manager.findByName(name));
  if (!entries) return;
  forEachEntry(*entries, [&](IPluginInterface& entry) { return visitDeclared<Interface>(entry, name, visit); });
}

}  // namespace corvix
