// Every class of the library that carries an identity, in the order of declaration.
#pragma once

#include "core/baselib/identity/RttiSupport.h"

#include <span>

namespace corvix {

struct LibraryClass {
  const stype_info& info;

  // The walk from that class on, over an object seen as the class.
  void* (*query)(void* object, const stype_info& wanted);
};

// Identities are complete before any code of the module runs, these too.
std::span<const LibraryClass> libraryClasses() noexcept;

}  // namespace corvix
