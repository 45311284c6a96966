#include "IFaulty.h"

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) crash();
  return TRUE;
}

CORVIX_PLUGIN({L"Faulty.Object", corvix::create<Good>})
