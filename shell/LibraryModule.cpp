#include "shell/LibraryModule_p.h"

namespace corvix {

namespace {

void* attachedModule = nullptr;
bool processEnds = false;

}  // namespace

void* libraryModule() noexcept { return attachedModule; }

void setLibraryModule(void* module) noexcept { attachedModule = module; }

bool isProcessEnding() noexcept { return processEnds; }

void setProcessEnding() noexcept { processEnds = true; }

}  // namespace corvix
