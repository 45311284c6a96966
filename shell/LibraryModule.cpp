#include "shell/LibraryModule_p.h"

namespace corvix {

namespace {

void* attachedModule = nullptr;

}  // namespace

void* libraryModule() noexcept { return attachedModule; }

void setLibraryModule(void* module) noexcept { attachedModule = module; }

}  // namespace corvix
