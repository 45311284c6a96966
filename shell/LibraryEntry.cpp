#include "shell/LibraryModule_p.h"

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) corvix::setLibraryModule(module);
  return TRUE;
}
