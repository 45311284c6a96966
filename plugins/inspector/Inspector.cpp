// The objects through which a program reaches the window.
#include "descriptor.h"
#include "plugins/inspector/Frame.h"
#include "plugins/inspector/IInspector.h"

namespace corvix::inspector {

class Inspector : public BSmartObject, public IInspector {
  CORVIX_IDENTITY(Inspector, 0x697CB631, 0x5645FD0D, 0xF6B40AB1, 0xA420E542, BSmartObject, IInspector)

 public:
  void* windowHandle() const noexcept override { return Frame::current() ? Frame::current()->window() : nullptr; }
  void show(bool visible) override {
    if (visible) {
      Frame::open();
    } else {
      Frame::close();
    }
  }
  bool showTab(const wchar_t* name) override { return name && Frame::current() && Frame::current()->showTab(name); }
};

class OpenAction : public BSmartObject, public IAction {
  CORVIX_DECLARED_IDENTITY(OpenAction, descriptor::Actions_Inspect, BSmartObject, IAction)

 public:
  const wchar_t* name() const noexcept override { return L"Actions.Inspect"; }
  int validate(IActionSender*) override { return notify::kTaken; }
  int process(IActionSender*) override { return Frame::open() ? notify::kTaken : notify::kStop; }
};

}  // namespace corvix::inspector

CORVIX_PLUGIN(corvix::rowFor<descriptor::Window_Inspector, corvix::inspector::Inspector>(),
              corvix::rowFor<descriptor::Actions_Inspect, corvix::inspector::OpenAction>())
