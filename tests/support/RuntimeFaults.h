// With a HeapFaults: the language's library allocates in a module of its own, and is counted and refused too.
#pragma once

#include "tests/support/HeapFaults.h"
#include "tests/support/ImportTable.h"

namespace corvix::testing_support {

class RuntimeFaults {
 private:
  template <class Function>
  static Function& slotOf(const char* function) {
    return *reinterpret_cast<Function*>(importSlotOf(GetModuleHandleW(L"libstdc++-6.dll"), function));
  }
  ImportSlot<void* (*)(std::size_t)> mallocs_{slotOf<void* (*)(std::size_t)>("malloc"), HeapFaults::countedMalloc};
  ImportSlot<void (*)(void*)> frees_{slotOf<void (*)(void*)>("free"), HeapFaults::countedFree};
};

}  // namespace corvix::testing_support
