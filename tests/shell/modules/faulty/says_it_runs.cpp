// Says when its code is loaded, and when it is told of the start. Declares to be told of everything.
#include "shell/Plugin.h"

#include <cstdio>
#include <cstring>

#include <windows.h>

namespace {

void say(const char* what) {
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<const char*>(&say), &module);
  char path[MAX_PATH] = "";
  GetModuleFileNameA(module, path, MAX_PATH);
  std::printf("[%s %s]\n", std::strrchr(path, '\\') + 1, what);
  std::fflush(stdout);
}

constexpr DWORD kQuiet = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;
const bool isLoaded = (say((GetThreadErrorMode() & kQuiet) == kQuiet ? "runs quietly" : "runs with dialogs"), true);

class Told final : public corvix::BSmartObject, public corvix::IPluginManagerAfterInit {
  CORVIX_IDENTITY(Told, 0x3C19A7E4, 0x4B60D28F, 0x95F3C01A, 0x67E8B42D, corvix::BSmartObject,
                  corvix::IPluginManagerAfterInit)

 public:
  void afterInit(corvix::IPluginManager&) override { say("is told"); }
};

}  // namespace

CORVIX_PLUGIN({L"IPluginManagerAfterInit", corvix::create<Told>})
