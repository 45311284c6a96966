// The objects that the library itself makes: one row for each interface of its own descriptor that it implements. They
// come from layers that the shell does not know; library/LibraryObjects.cpp, above them all, has the table.
#pragma once

#include "shell/ClassFactory.h"

namespace corvix {

// Null when the library makes no such object.
const FactoryRow* findLibraryObject(std::wstring_view interfaceName) noexcept;

}  // namespace corvix
