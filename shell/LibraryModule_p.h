#pragma once

namespace corvix {

// The library's own module handle of the system; null before the library is attached.
void* libraryModule() noexcept;
void setLibraryModule(void* module) noexcept;

}  // namespace corvix
