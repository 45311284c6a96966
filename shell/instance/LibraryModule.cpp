#include "shell/instance/LibraryModule_p.h"

#include "core/baselib/objects/GlobalData_p.h"

namespace corvix {

namespace {

void* attachedModule = nullptr;

struct GlobalDataEnd {
  ~GlobalDataEnd() { endGlobalData(); }
};

}  // namespace

void* libraryModule() noexcept { return attachedModule; }

void libraryAttached(void* module) noexcept {
  attachedModule = module;
  // The run-time's list of exits works backwards.
  static const GlobalDataEnd end;
}

}  // namespace corvix
