// Greets by name, as the user's setting has it, and says good morning when that event is raised.
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
  CORVIX_IDENTITY(MorningTarget, 0x02EC7B57, 0xAE2A5BC7, 0xCE675390, 0x6DEDA6A0, corvix::BSmartObject,
                  corvix::IGlobalEventTarget)

 public:
  int onGlobalEvent(corvix::IGlobalEvent&) override {
    corvix::IShell::getInstance()->changeStatusText(0, L"the greeter wishes a good morning");
    return corvix::notify::kGoOn;
  }
};

}  // namespace example

CORVIX_PLUGIN({L"Example.Greeter", corvix::create<example::Greeter>},
              {L"GlobalEvent.Morning", corvix::create<example::MorningTarget>})
