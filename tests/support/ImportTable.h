// Where a module keeps the addresses of what it imports.
#pragma once

#include <cstring>

#include <windows.h>

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

}  // namespace corvix::testing_support
