// Ends in the way that its argument names; what is told meanwhile goes to standard error.
#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/system/Exception.h"
#include "core/baselib/system/Log.h"
#include "shell/Plugin.h"

#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <windows.h>

using namespace corvix;

namespace {

void tell(const char* text) { std::fputs(text, stderr); }

const char* atStart = "";

class Listener final : public IShellListener {
  CORVIX_IDENTITY(Listener, 0x6A30C9F2, 0x81D5B74E, 0x2EF76093, 0xB94C18AD, IShellListener)
 public:
  int onInitialize(IShell&) override {
    if (atStart == std::string_view("dies")) TerminateProcess(GetCurrentProcess(), 9);
    if (atStart == std::string_view("exits")) std::exit(0);
    return notify::kGoOn;
  }
  int onUnInitialize(IShell&) override {
    tell("shell\n");
    return notify::kGoOn;
  }
};

class Boxes final : public IDialogListener {
  CORVIX_IDENTITY(Boxes, 0x84D17C5B, 0x39E0F26A, 0xD2A5B819, 0x6F43C07E, IDialogListener)
 public:
  int onSysMsgBox(MessageBoxRequest& request) override {
    std::fprintf(stderr, "box: %ls\n", request.text);
    return notify::kGoOn;
  }
  int onShowCustomDialog(CustomDialogRequest&) override { return notify::kGoOn; }
  int onShowConfirmation(ConfirmationRequest&) override { return notify::kGoOn; }
};

int value;

void leave(const char* name, BGlobalData::Destructor destructor) {
  BGlobalData::setItem(IBSmartObject::classInfo(), name, &value, destructor);
}

void onValue(void*) { tell(IShell::getInstance() ? "value, shell there\n" : "value\n"); }

HANDLE const isReady = CreateEventW(nullptr, TRUE, FALSE, nullptr);

void holdForGood(void*) {
  SetEvent(isReady);
  for (;;) Sleep(1000);
}

// A thread that does it and holds what it got until it is stopped.
template <class Call>
void onThread(Call call) {
  std::thread(call).detach();
  WaitForSingleObject(isReady, INFINITE);
}

HMODULE withModule() {
  const HMODULE module = LoadLibraryW(L"leaves_value.dll");
  const auto leaveValue = reinterpret_cast<void (*)()>(reinterpret_cast<void*>(GetProcAddress(module, "leaveValue")));
  leaveValue();
  return module;
}

void showModules() {
  IPluginManager& manager = *IShell::getInstance()->pluginManager();
  for (i32 i = 1; i < manager.moduleCount(); ++i) {
    const IPluginModule& module = *manager.moduleAt(i);
    std::fprintf(stderr, "%d %ls\n", static_cast<int>(module.state()), module.reason());
  }
}

const struct {
  std::string_view name;
  void (*act)();
} kWays[] = {
    {"modules", showModules},
    {"killed", [] { TerminateProcess(GetCurrentProcess(), 9); }},
    {"log", [] { switchLog(true); }},
    {"plain", [] { shellNotifications(ShellNotification::Initialize); }},
    {"task", [] { IShell::getInstance()->runOnShellThread([](void*) { tell("task\n"); }, nullptr); }},
    {"throws",
     [] {
       leave("a", [](void*) { throw std::runtime_error("no time"); });
       static SException error(L"x.cpp", 1, L"no time at all");
       leave("b", [](void*) { throw &error; });
       BGlobalData::destroyAll();
     }},
    {"detached", [] { withModule(); }},
    {"unloaded", [] { FreeLibrary(withModule()); }},
    {"heldData",
     [] {
       onThread([] {
         leave("held", holdForGood);
         leave("held", nullptr);  // runs the first one's destructor, under the lock
       });
     }},
    {"heldLists",
     [] {
       onThread([] {
         dataCSProc().enter();
         holdForGood(nullptr);
       });
     }},
    // Threads that make windows, which the end stops anywhere: in the system's own locks too.
    {"windows",
     [] {
       for (int i = 0; i < 4; ++i) {
         std::thread([] {
           for (;;) {
             DestroyWindow(
                 CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr));
           }
         }).detach();
       }
       Sleep(20);
     }},
};

}  // namespace

// "SHELL WAY": with a shell or without.
int main(int, char** arguments) {
  if (arguments[1] == std::string_view("shell")) {
    IShell::startUnattended();
    atStart = arguments[2];
    shellNotifications(ShellNotification::Initialize).addListener(new Listener);
    shellNotifications(ShellNotification::SysMsgBox).addListener(new Boxes);
    IShell::getInstance()->sender(ShellNotification::UnInitialize).addListener(new Listener);
  }
  leave("of the program", onValue);
  for (const auto& way : kWays) {
    if (way.name == arguments[2]) way.act();
  }
}
