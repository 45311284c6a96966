#pragma once

namespace corvix {

// The library's own module handle of the system; null before the library is attached.
void* libraryModule() noexcept;

// Once, when everything that is made while the library is loaded stands. What has to go after all that programs make
// and before all that stands now, goes then: the global data.
void libraryAttached(void* module) noexcept;

}  // namespace corvix
