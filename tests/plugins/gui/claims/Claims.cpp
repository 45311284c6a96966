// Claims keys of everybody's: whoever presses one is told so in the status bar.
#include "descriptor.h"
#include "shell/Plugin.h"
#include "shell/Shell.h"

namespace corvix {

namespace {

class Claim final : public BSmartObject, public IAction {
  CORVIX_IDENTITY(Claim, 0x2FD7A6C8, 0x95E0314B, 0x4CB8F27D, 0x816E9A03, BSmartObject, IAction)

 public:
  const wchar_t* name() const noexcept override { return descriptor::Actions_Test_Claim::name; }
  int validate(IActionSender*) override { return notify::kTaken; }
  int process(IActionSender*) override {
    IShell::getInstance()->changeStatusText(0, L"claimed");
    return notify::kTaken;
  }
};

}  // namespace

}  // namespace corvix

CORVIX_PLUGIN({descriptor::Actions_Test_Claim::name, corvix::create<corvix::Claim>})
