#include "core/baselib/system/ProcessEnd_p.h"
#include "shell/instance/LibraryModule_p.h"

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved) {
  if (reason == DLL_PROCESS_ATTACH) corvix::libraryAttached(module);
  if (reason == DLL_PROCESS_DETACH && reserved) corvix::setProcessEnding();
  return TRUE;
}
