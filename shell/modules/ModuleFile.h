// A module on disk: reading its descriptor as data, loading its code, and saying why not. Every way in is
// guarded: the file may hold anything.
#pragma once

#include "core/baselib/system/KernelFile.h"

#include <string>

namespace corvix {

// What came of an attempt; `reason` is a sentence for the user when it failed.
struct DescriptorBytes {
  std::vector<unsigned char> bytes;
  std::wstring reason;
};

struct LoadedModule {
  HMODULE module = nullptr;
  bool crashed = false;  // loading raised an exception that the loader of the system did not handle
  std::wstring reason;
};

// From a file, without running its code.
DescriptorBytes readDescriptorResource(const std::wstring& path);

// From a module that is loaded.
DescriptorBytes readDescriptorResource(HMODULE module);

// `path` is absolute: the module's imports are looked for beside it, beside the program and in the system's
// folder, never in the current directory. The module stays loaded for good.
LoadedModule loadModuleCode(const std::wstring& path);

// For once at start: the current directory is not searched for modules from then on.
void useSafeModuleSearch() noexcept;

}  // namespace corvix
