#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) *static_cast<volatile int*>(nullptr) = 1;
  return TRUE;
}
