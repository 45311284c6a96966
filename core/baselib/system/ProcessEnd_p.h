// The end of the process. The system has stopped all other threads by then, wherever they were and whatever they held:
// nothing may wait for anything that one of them has.
#pragma once

namespace corvix {

// True from the first module's detach on: statics of modules that were detached before are gone, their code and their
// objects are not. [any thread]
bool isProcessEnding() noexcept;

// What the library's own entry point is told.
void setProcessEnding() noexcept;

}  // namespace corvix
