#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "plugins/inspector/IInspector.h"
#include "plugins/windows/Picture.h"

#include <windows.h>

namespace host {

using namespace corvix;

namespace {

// Until the window is closed, or the time is over; 0: however long.
void runMessages(IInspector& inspector, DWORD longestMs) {
  const DWORD start = GetTickCount();
  const UINT_PTR timer = SetTimer(nullptr, 0, 50, nullptr);
  MSG message;
  while (inspector.windowHandle() && (!longestMs || GetTickCount() - start < longestMs) &&
         GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  KillTimer(nullptr, timer);
}

int inspect(IPluginManager& manager, const std::string& tab, const std::string& picture) {
  const auto inspector = createObject<IInspector>(manager, L"Window.Inspector");
  if (!inspector) {
    explainNoObject(manager, L"Window.Inspector");
    return 1;
  }
  inspector->show(true);
  const auto window = static_cast<HWND>(inspector->windowHandle());
  if (!window) {
    std::fprintf(stderr, "corvix-host: no window could be made. Is there a display? (CORVIX_DISPLAY=1)\n");
    return 1;
  }
  if (!tab.empty()) inspector->showTab(wide(tab).c_str());
  runMessages(*inspector, picture.empty() ? 0 : 1000);  // time to paint
  if (picture.empty()) return 0;
  const bool isSaved = windows::saveInside(manager, window, wide(picture).c_str());
  inspector->show(false);
  std::fprintf(isSaved ? stdout : stderr,
               isSaved ? "%s written\n" : "corvix-host: %s could not be written. Does its folder exist?\n",
               picture.c_str());
  return isSaved ? 0 : 1;
}

}  // namespace

const Command inspectCommand(
    "inspect", "Open the inspector: modules, interfaces, settings, log, events and memory, live",
    {{"--tab",
      "Begin with this one",
      Argument::Optional,
      {"Modules", "Interfaces", "Settings", "Log", "Events", "Memory"}},
     {"--picture", "Write what it looks like into this PNG file and close it", Argument::Optional}},
    [](Host& host, const Texts& given) { return inspect(host.manager(), given[0], given[1]); });

}  // namespace host
