// A function of a module that is loaded, found without the system: its loader would keep its lock if the module's
// tables made it crash.
#pragma once

#include <windows.h>

namespace corvix {

struct LoadedFunction {
  void* address = nullptr;
  bool isDamaged = false;           // the tables lead outside the module, or to data
  const wchar_t* reason = nullptr;  // a sentence, when there is no address
};

// To be called inside the guard: a text of the tables may lie in memory that cannot be read.
LoadedFunction findExport(HMODULE module, const char* name);

}  // namespace corvix
