// The smallest plug-in: one object with one interface.
#include "examples/plugins/greeter/IGreeter.h"
#include "shell/Plugin.h"

#include <string>

namespace example {

class Greeter : public corvix::BSmartObject, public IGreeter {
  CORVIX_IDENTITY(Greeter, 0xB84F6D20, 0x47E193CA, 0x8C05F7D3, 0x2E96A41B, corvix::BSmartObject, IGreeter)

 public:
  corvix::WideString greeting(const wchar_t* whom) const override { return L"Hello, " + std::wstring(whom) + L"!"; }
};

}  // namespace example

CORVIX_PLUGIN({L"Example.Greeter", corvix::create<example::Greeter>})
