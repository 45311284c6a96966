// A module on disk: reading its descriptor as data, loading its code, and saying why not. Every way in is
// guarded: the file may hold anything.
#pragma once

#include "core/baselib/system/KernelFile_p.h"
#include "shell/ClassFactory.h"

#include <span>
#include <string>
#include <vector>

namespace corvix {

// What came of an attempt; `reason` is a sentence for the user when it failed.
struct DescriptorBytes {
  std::vector<unsigned char> bytes;
  std::wstring reason;
  bool isNoPlugin = false;  // a library that has none
};

// The same for who only looks at it; who gave it says how long it stands.
struct DescriptorView {
  std::span<const unsigned char> bytes;
  const wchar_t* reason = L"";
  bool isNoPlugin = false;
};

struct LoadedFactory {
  BClassFactory* factory = nullptr;
  bool crashed = false;  // an exception of the system ended it
  std::wstring reason;
};

// From a file, without running its code.
DescriptorBytes readDescriptorResource(const std::wstring& path);

// Another resource of type PLUGININFO, likewise: from the file, or from memory when the module is `loaded`. The reason
// is empty when there is none of that name; names are capitals, digits and "_", at most 32.
DescriptorBytes readTemplateResource(const std::wstring& path, HMODULE loaded, const std::wstring& name);

// Of a library that has none.
DescriptorView noDescriptor() noexcept;

// From a module that is loaded.
DescriptorBytes readDescriptorResource(HMODULE module);

// Loads a module's code and asks it for its class factory. `path` is absolute: the module's imports are looked for
// beside it, beside the program and in the system's folder, never in the current directory. The module stays loaded for
// good.
LoadedFactory loadFactory(const std::wstring& path);

// The class factory of a module that is loaded.
LoadedFactory findFactory(HMODULE module);

// For once at start: the current directory is not searched for modules from then on.
void useSafeModuleSearch() noexcept;

}  // namespace corvix
