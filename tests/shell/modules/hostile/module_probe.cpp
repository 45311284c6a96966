// What a program meets in a folder of modules: corvix-module-probe FOLDER lists them, corvix-module-probe FOLDER ask
// has those that the standard input names make an object. A line for each thing that is found out, its parts separated
// by tabs.
#include "shell/Shell.h"

#include <cstdio>
#include <string>
#include <thread>
#include <utility>

#include <windows.h>
#include <psapi.h>

namespace {

using namespace corvix;

std::string utf8(std::wstring_view text) {
  std::string bytes(text.size() * 3, 0);
  const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                                       static_cast<int>(bytes.size()), nullptr, nullptr);
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

void tell(const IPluginModule& module) {
  constexpr const char* kStates[] = {"described", "loaded", "failed", "no plug-in"};
  const std::string path = utf8(module.path());
  std::printf("module\t%s\t%s\t%s\n", path.substr(path.find_last_of('\\') + 1).c_str(),
              kStates[static_cast<int>(module.state())], utf8(module.reason()).c_str());
}

class Boxes final : public IDialogListener {
  CORVIX_IDENTITY(Boxes, 0x6E0C1B52, 0x8A5D44F1, 0x93B7E02C, 0x1F6A8D30, IDialogListener)

 public:
  int onSysMsgBox(MessageBoxRequest& request) override {
    const std::string text = utf8(request.text);
    std::printf("box\t%s\t%s\n", utf8(request.caption).c_str(), text.substr(text.size() - 24).c_str());
    return notify::kTaken;
  }
  int onShowCustomDialog(CustomDialogRequest&) override { return notify::kGoOn; }
  int onShowConfirmation(ConfirmationRequest&) override { return notify::kGoOn; }
};

std::wstring wide(const char* text) {
  std::wstring units(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0)), 0);
  MultiByteToWideChar(CP_UTF8, 0, text, -1, units.data(), static_cast<int>(units.size()));
  units.pop_back();
  return units;
}

void listAll(IPluginManager& manager, const std::wstring& folder) {
  const i32 before = manager.moduleCount();
  for (const std::wstring& spelling : {folder, folder + L"\\", folder + L"\\.\\", folder + L"\\..\\PLUGINS"})
    std::printf("added\t%d\n", static_cast<int>(manager.scanFolder(spelling.c_str())));
  for (i32 i = before; i < manager.moduleCount(); ++i) tell(*manager.moduleAt(i));
  PROCESS_MEMORY_COUNTERS memory{};
  GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
  std::printf("memory\t%u\n", static_cast<unsigned>(memory.PeakWorkingSetSize >> 20));
}

// Of both floating-point units.
std::pair<unsigned, unsigned> numberModes() {
  unsigned vector = 0;
  unsigned short stack = 0;
  asm volatile("stmxcsr %0\n\tfnstcw %1" : "=m"(vector), "=m"(stack));
  return {vector & ~0x3Fu, stack};
}

// Names of files come from the standard input.
void askEach(IPluginManager& manager, const std::wstring& folder) {
  Boxes boxes;
  shellNotifications(ShellNotification::SysMsgBox).addListener(static_cast<IDialogListener*>(&boxes));
  for (char name[300]; std::scanf("%299s", name) == 1;) {
    std::printf("asking\t%s\n", name);
    std::fflush(stdout);
    const auto mode = numberModes();
    const i32 before = manager.moduleCount();
    const IPluginModule* const loaded = manager.loadModule((folder + L"\\" + wide(name)).c_str());
    const Ref<IBSmartObject> made = createObject<IBSmartObject>(manager, L"Hostile.object");
    if (numberModes() != mode) std::printf("mode\t%s\n", name);
    if (loaded || made) std::printf("made\t%s\n", name);
    if (manager.moduleCount() > before) tell(*manager.moduleAt(before));
    std::fflush(stdout);
  }
  shellNotifications(ShellNotification::SysMsgBox).removeListener(static_cast<IDialogListener*>(&boxes));
}

}  // namespace

int main(int count, char** arguments) {
  const std::wstring key = L"Software\\CorvixTest" + std::to_wstring(GetCurrentProcessId());
  HKEY ownRegistry = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &ownRegistry, nullptr);
  RegOverridePredefKey(HKEY_CURRENT_USER, ownRegistry);
  IShell::startUnattended();
  (count > 2 ? askEach : listAll)(*IShell::getInstance()->pluginManager(), wide(arguments[1]));
  RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str());
  std::thread([] { std::printf("alive\n"); }).join();
  std::fflush(stdout);
  TerminateProcess(GetCurrentProcess(), 42);
}
