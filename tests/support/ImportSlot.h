// Replaces one function that this program imports, for itself only and for as long as the object lives:
//
//   extern "C" decltype(&SetTimer) setTimerSlot CORVIX_IMPORTED(SetTimer, "@16");
//   ImportSlot slot(setTimerSlot, refuse);
#pragma once

#include <cstring>

#include <windows.h>

// The name of an import's slot for the linker: `behind` is the bytes of arguments that the system's names have in 32
// bits.
#if defined(_WIN64)
#define CORVIX_IMPORTED(name, behind) __asm__("__imp_" #name)
#else
#define CORVIX_IMPORTED(name, behind) __asm__("__imp__" #name behind)
#endif

namespace corvix::testing_support {

// The slot of a function by its name, in any module of the process; null if the module does not import it.
inline void** importSlotOf(HMODULE module, const char* function) {
  auto* const image = reinterpret_cast<unsigned char*>(module);
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
  const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + imports.VirtualAddress);
  for (; library->FirstThunk; ++library) {
    const auto* name = reinterpret_cast<const IMAGE_THUNK_DATA*>(image + library->OriginalFirstThunk);
    auto** slot = reinterpret_cast<void**>(image + library->FirstThunk);
    for (; name->u1.AddressOfData; ++name, ++slot) {
      if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
      const auto* const entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(image + name->u1.AddressOfData);
      if (std::strcmp(reinterpret_cast<const char*>(entry->Name), function) == 0) return slot;
    }
  }
  return nullptr;
}

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
