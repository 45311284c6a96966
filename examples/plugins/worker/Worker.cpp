// An action that shows its progress, a target of a global event, and a listener of another plug-in's setting:
// none of them knows any other module.
#include "descriptor.h"
#include "shell/GlobalEvent.h"
#include "shell/Plugin.h"

#include <chrono>
#include <string>
#include <thread>

namespace example {

using namespace corvix;

class WorkAction : public BSmartObject, public IAction {
  CORVIX_DECLARED_IDENTITY(WorkAction, descriptor::Actions_Example_Work, BSmartObject, IAction)

 public:
  const wchar_t* name() const noexcept override { return L"Actions.Example.Work"; }

  int validate(IActionSender*) override { return steps() > 0 ? notify::kTaken : notify::kStop; }

  int process(IActionSender* sender) override {
    if (validate(sender) == notify::kStop) return notify::kStop;
    IShell& shell = *IShell::getInstance();
    const i32 id = shell.newProgressId();
    const i32 count = steps();
    i32 done = 0;
    shell.startProgress(id, 0, count, done, kProgressCanStop);
    for (bool goesOn = true; goesOn && done < count;) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      goesOn = shell.changeProgress(id, 0, count, ++done, kProgressCanStop) != notify::kStop;
    }
    shell.stopProgress(id, 0, count, done, kProgressCanStop);
    return done == count ? notify::kTaken : notify::kStop;
  }

 private:
  static i32 steps() { return integerSetting(*IShell::getInstance()->settings(), L"Worker", L"Steps", 0); }
};

class EarlyTarget : public BSmartObject, public IGlobalEventTarget {
  CORVIX_DECLARED_IDENTITY(EarlyTarget, descriptor::GlobalEvent_Morning, BSmartObject, IGlobalEventTarget)

 public:
  int onGlobalEvent(IGlobalEvent& event) override {
    const std::wstring text = L"the worker was up before " + std::wstring(event.name());
    IShell::getInstance()->changeStatusText(0, text.c_str());
    return notify::kGoOn;
  }
};

// Keeps itself alive until the shell shuts down: nobody else has a reference.
class MannersWatcher : public BSmartObject,
                       public IPluginManagerAfterInit,
                       public ISettingListener,
                       public IShellListener {
  CORVIX_DECLARED_IDENTITY(MannersWatcher, descriptor::IPluginManagerAfterInit, BSmartObject, IPluginManagerAfterInit,
                           ISettingListener, IShellListener)

 public:
  void afterInit(IPluginManager&) override {
    IShell& shell = *IShell::getInstance();
    addRef();
    shell.settings()->watch(kGroup, kItem, this, 0);
    shell.sender(ShellNotification::UnInitialize).addListener(shellListener());
  }

  int onSettingChanged(IBSettings& settings, const wchar_t* group, const wchar_t* item) override {
    const bool polite = integerSetting(settings, group, item, 1) != 0;
    IShell::getInstance()->changeStatusText(
        0, polite ? L"the worker hears: manners are back" : L"the worker hears: no more manners");
    return notify::kGoOn;
  }

  int onInitialize(IShell&) override { return notify::kGoOn; }
  int onUnInitialize(IShell& shell) override {
    shell.settings()->unwatch(kGroup, kItem, this);
    shell.sender(ShellNotification::UnInitialize).removeListener(shellListener());
    release();
    return notify::kGoOn;
  }

 private:
  static constexpr wchar_t kGroup[] = L"Greeter";
  static constexpr wchar_t kItem[] = L"Polite";
  IShellListener* shellListener() { return this; }
};

}  // namespace example

CORVIX_PLUGIN(corvix::rowFor<descriptor::Actions_Example_Work, example::WorkAction>(),
              corvix::rowFor<descriptor::GlobalEvent_Morning, example::EarlyTarget>(),
              corvix::rowFor<descriptor::IPluginManagerAfterInit, example::MannersWatcher>())
