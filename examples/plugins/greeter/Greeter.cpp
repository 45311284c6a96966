// Greets by name, as the user's setting has it, and says good morning when that event is raised.
#include "descriptor.h"
#include "examples/plugins/greeter/IGreeter.h"
#include "shell/GlobalEvent.h"
#include "shell/Plugin.h"

#include <string>

namespace example {

class Greeter : public corvix::BSmartObject, public IGreeter {
  CORVIX_IDENTITY(Greeter, 0xB84F6D20, 0x47E193CA, 0x8C05F7D3, 0x2E96A41B, corvix::BSmartObject, IGreeter)

 public:
  corvix::WideString greeting(const wchar_t* whom) const override {
    const auto& settings = *corvix::IShell::getInstance()->settings();
    const bool isPolite = corvix::integerSetting(settings, L"Greeter", L"Polite", 1) != 0;
    return (isPolite ? L"Hello, " : L"Oh, ") + std::wstring(whom) + (isPolite ? L"!" : L" again.");
  }
};

class MorningTarget : public corvix::BSmartObject, public corvix::IGlobalEventTarget {
  CORVIX_DECLARED_IDENTITY(MorningTarget, descriptor::GlobalEvent_Morning, corvix::BSmartObject,
                           corvix::IGlobalEventTarget)

 public:
  int onGlobalEvent(corvix::IGlobalEvent&) override {
    corvix::IShell::getInstance()->changeStatusText(0, L"the greeter wishes a good morning");
    return corvix::notify::kGoOn;
  }
};

}  // namespace example

CORVIX_PLUGIN(corvix::rowFor<descriptor::Example_Greeter, example::Greeter>(),
              corvix::rowFor<descriptor::GlobalEvent_Morning, example::MorningTarget>())
