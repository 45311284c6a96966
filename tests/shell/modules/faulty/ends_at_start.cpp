// Ends its program, or crashes it, where the environment's CORVIX_TEST_END says: in one of the phases of a start.
#include "shell/Plugin.h"

#include <cstdlib>
#include <string_view>

#include <windows.h>

namespace {

bool endsIn(std::string_view phase) {
  char wanted[32] = "";
  GetEnvironmentVariableA("CORVIX_TEST_END", wanted, sizeof wanted);
  return wanted == phase;
}

void endIn(std::string_view phase) {
  if (endsIn(phase)) TerminateProcess(GetCurrentProcess(), 9);
}

class Told final : public corvix::BSmartObject, public corvix::IPluginManagerAfterInit, public corvix::IShellListener {
  CORVIX_IDENTITY(Told, 0x95A3E07C, 0x1D84F2B6, 0xC20B7E59, 0x48F6D31A, corvix::BSmartObject,
                  corvix::IPluginManagerAfterInit, corvix::IShellListener)

 public:
  void afterInit(corvix::IPluginManager&) override {
    if (endsIn("crash")) *static_cast<volatile int*>(nullptr) = 1;
    if (endsIn("exit")) std::exit(0);
    while (endsIn("wait")) Sleep(20);
    endIn("told");
    addRef();
    corvix::shellNotifications(corvix::ShellNotification::Initialize)
        .addListener(static_cast<corvix::IShellListener*>(this));
  }
  int onInitialize(corvix::IShell&) override {
    endIn("initialize");
    return corvix::notify::kGoOn;
  }
  int onUnInitialize(corvix::IShell&) override { return corvix::notify::kGoOn; }
};

const bool isLoaded = (endIn("load"), true);

corvix::IBSmartObject* make() {
  endIn("object");
  return new Told;
}

}  // namespace

extern "C" CORVIX_EXPORT corvix::BClassFactory* queryClassFactoryLocal() {
  endIn("factory");
  static constexpr corvix::FactoryRow kRows[] = {{L"IPluginManagerAfterInit", make}};
  static corvix::TableFactory factory(kRows);
  return &factory;
}
