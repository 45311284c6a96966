// BGlobalData: named pointers of the whole process, kept under a class and a short name. It is how singletons
// and shared lists are found from every module. The class counts by its four words, whatever its text.
//
// The registry owns nothing but the right to call a value's destructor. All operations, destructors
// included, run under the registry's own lock, which is recursive: a destructor may call back. What a destructor throws
// goes no further, and one whose module has left the process is not called. [any thread]
#pragma once

#include "core/baselib/objects/Transportable.h"

namespace corvix {

class CORVIX_API BGlobalData {
 public:
  using Destructor = void (*)(void* value);

  BGlobalData() = delete;

  // The value, or null when none is set.
  static void* getItem(const stype_info& owner, const char* name) noexcept;

  // Stores or replaces. A value that is replaced is first given to its destructor, if it has one, even when
  // the new value is the same pointer.
  static void setItem(const stype_info& owner, const char* name, void* value, Destructor destructor);

  // Gives every value to its destructor and forgets them all. The library calls it at its own end, after the shell is
  // gone; at the end of the process the statics of other modules are gone too, so a destructor uses nothing but its
  // value.
  static void destroyAll();
};

// An object as a value, kept in the form in which every module can ask it for the interface that it needs. Whoever sets
// it takes it out, by a null, before the object goes: the registry has no reference.
template <class Object>
void setGlobalObject(const stype_info& owner, const char* name, Object* object) {
  BGlobalData::setItem(owner, name, query<IBTransportable>(object), nullptr);
}
template <class Interface>
Interface* globalObject(const stype_info& owner, const char* name) {
  return query<Interface>(static_cast<IBTransportable*>(BGlobalData::getItem(owner, name)));
}

}  // namespace corvix
