// corvix-desk: a document editor that is nothing but its plug-ins. It starts the shell, asks for a frame, hands on its
// command line, and runs until the last frame is closed.
#include "shell/Shell.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/GUIManager.h"
#include "shell/services/Report.h"

#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include <shellapi.h>

namespace {

using namespace corvix;

constexpr wchar_t kCaption[] = L"Corvix Desk";

struct FreeLocal {
  void operator()(void* memory) const { LocalFree(memory); }
};

// What is not for the program itself.
std::vector<const wchar_t*> readArguments(const wchar_t* const* all, int count) {
  std::vector<const wchar_t*> rest;
  for (int i = 1; i < count; ++i) {
    if (!std::wcscmp(all[i], L"--unattended")) {
      IShell::startUnattended();
    } else {
      rest.push_back(all[i]);
    }
  }
  return rest;
}

int complain(IShell& shell, const wchar_t* text) {
  shell.messageBox(text, kCaption, MB_OK | MB_ICONERROR, IDOK);
  return 1;
}

// Why nobody brings the windows: no plug-in is there, or what became of the one that is.
std::wstring whyNoWindows(IPluginManager& manager) {
  const auto declared = Ref<IBCollection>::adopt(manager.findByName(L"IGUIManager.Instance"));
  const auto* const entry = declared ? query<IPluginInterface>(declared->item(0)) : nullptr;
  const std::wstring why = entry ? entry->module()->reason() : L"gui.dll is missing in the folder \"plugins\".";
  return L"There is no user interface: " + why;
}

int run(IShell& shell, const std::vector<const wchar_t*>& arguments) {
  IGUIManager* const gui = shell.guiManager();
  if (!gui) return complain(shell, whyNoWindows(*shell.pluginManager()).c_str());
  IFrameWindow* const frame = gui->createFrame(L"Main");
  if (!frame) return complain(shell, reportText(*gui->report()).c_str());
  frame->show(true);
  if (shell.processCommandLine(arguments.data(), static_cast<i32>(arguments.size())) != 0)
    complain(shell, L"Some of what stands on the command line is nothing that a plug-in knows.");
  return gui->run();
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  int count = 0;
  const std::unique_ptr<wchar_t*, FreeLocal> all(CommandLineToArgvW(GetCommandLineW(), &count));
  const std::vector<const wchar_t*> arguments = readArguments(all.get(), count);
  IShell& shell = *IShell::getInstance();
  const int code = run(shell, arguments);
  shell.shutDown();
  return code;
}
