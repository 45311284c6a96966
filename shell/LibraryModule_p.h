#pragma once

namespace corvix {

// The library's own module handle of the system; null before the library is attached.
void* libraryModule() noexcept;
void setLibraryModule(void* module) noexcept;

// True once the process ends: statics of other modules are gone then, their code and their objects are not.
bool isProcessEnding() noexcept;
void setProcessEnding() noexcept;

}  // namespace corvix
