#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/Objects.h"
#include "graphics/IAGDCCreator.h"
#include "plugins/inspector/IInspector.h"

#include <windows.h>

namespace host {

using namespace corvix;

namespace {

// What is in a window, taken from the window itself: no screen is needed.
bool savePicture(IPluginManager& manager, HWND window, const std::string& file) {
  RECT size;
  GetClientRect(window, &size);
  const int width = size.right, height = size.bottom;
  const auto creator = createObject<IAGDCCreator>(manager, L"AGDC.Memory");
  const auto copy = Ref<IAGDC>::adopt(creator ? creator->create(0, 0, nullptr, width, height) : nullptr);
  if (!copy) return false;
  const HDC device = GetDC(window);
  BitBlt(static_cast<HDC>(copy->deviceContext()), 0, 0, width, height, device, 0, 0, SRCCOPY);
  ReleaseDC(window, device);
  const auto image = Ref<IAGImage>::adopt(copy->createImage(width, height, ColorModel::Rgb, 0));
  return image && image->captureFrom(*copy, 0, 0) && image->saveFile(wide(file).c_str(), ImageFile::Png);
}

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
  const bool isSaved = savePicture(manager, window, picture);
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
