#include "IFaulty.h"

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return FALSE; }

CORVIX_PLUGIN({L"Faulty.Object", corvix::create<Good>})
