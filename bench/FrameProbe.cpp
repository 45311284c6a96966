// Prints, in nanoseconds, how long a program with the plug-in gui takes: "start", until its first frame is painted;
// "menu N", to open its menu of tools.
#include "bench/ProcessTime.h"
#include "shell/Shell.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/GUIManager.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace corvix;

namespace {

// The menu in the bar with that place.
double menuNs(HWND window, int place, int rounds) {
  const HMENU menu = GetSubMenu(GetMenu(window), place);
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < rounds; ++i) SendMessageW(window, WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), place);
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
  return GetMenuItemCount(menu) > 0 ? elapsed.count() / rounds : 0;
}

}  // namespace

int main(int, char** arguments) {
  IShell::startUnattended();
  IShell& shell = *IShell::getInstance();
  IGUIManager* const gui = shell.guiManager();
  IFrameWindow* const frame = gui ? gui->createFrame(L"Probe") : nullptr;
  if (!frame) return 1;
  frame->show(true);
  const double started = bench::processNs();
  const bool isMenu = arguments[1] && !std::strcmp(arguments[1], "menu");
  constexpr int kTools = 3;
  std::printf("%.0f\n", isMenu ? menuNs(static_cast<HWND>(frame->windowHandle()), kTools, 200) : started);
  shell.shutDown();
  return 0;
}
