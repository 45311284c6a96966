// Between "file" locations and paths of the system.
#pragma once

#include "core/suppliers/UrlRecord.h"

namespace corvix {

// The path of a "file" location: C:\dir\name, \\server\share\name, \name or, for a location without a slash at
// its start, name. "file:////server/share/name" and five slashes say what two say. Empty when there is nothing that the
// location may name: another scheme, a user or a port, characters that no file has (escaped ones too, and zeros),
// devices (CON, \\.\), streams within files, pipes.
CORVIX_API WideString pathOfLocation(const UrlRecord& location);

// The location of an absolute path, also of one with the mark of long paths (\\?\C:\name, \\?\UNC\server\share\name);
// empty for any other, for devices, and for names behind the mark that a location cannot name.
CORVIX_API WideString locationOfPath(std::wstring_view path);

// Whether a text is a path, and no location: it has no scheme, or only a drive's letter.
CORVIX_API bool isPath(std::wstring_view text) noexcept;

}  // namespace corvix
