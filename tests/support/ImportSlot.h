// Replaces one function that this program imports, for itself only and for as long as the object lives:
//
//   extern "C" decltype(&SetTimer) setTimerSlot CORVIX_IMPORTED(SetTimer, "@16");
//   ImportSlot slot(setTimerSlot, refuse);
#pragma once

#include <windows.h>

// The name of an import's slot for the linker: `behind` is the bytes of arguments that the system's names have in 32
// bits.
#if defined(_WIN64)
#define CORVIX_IMPORTED(name, behind) __asm__("__imp_" #name)
#else
#define CORVIX_IMPORTED(name, behind) __asm__("__imp__" #name behind)
#endif

namespace corvix::testing_support {

template <class Function>
class ImportSlot {
 public:
  ImportSlot(Function& slot, Function replacement) : slot_(slot), real_(slot) { set(replacement); }
  ~ImportSlot() { set(real_); }
  ImportSlot(const ImportSlot&) = delete;
  ImportSlot& operator=(const ImportSlot&) = delete;

 private:
  void set(Function function) {
    DWORD old;
    VirtualProtect(&slot_, sizeof slot_, PAGE_READWRITE, &old);
    slot_ = function;
    VirtualProtect(&slot_, sizeof slot_, old, &old);
  }

  Function& slot_;
  Function real_;
};

}  // namespace corvix::testing_support
