// Replaces one function that this program imports, for itself only and for as long as the object lives:
//
//   extern "C" decltype(&SetTimer) setTimerSlot __asm__("__imp__SetTimer@16");
//   ImportSlot slot(setTimerSlot, refuse);
#pragma once

#include <windows.h>

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
