#include "examples/host/ShellDisplay.h"

#include "examples/host/Console.h"

#include <algorithm>

#include <windows.h>
#include <io.h>

namespace host {

using namespace corvix;

namespace {

constexpr i32 kBarWidth = 40;

std::atomic<bool> stopIsWanted{false};

BOOL WINAPI onConsoleEvent(DWORD event) {
  // The second time the system ends the program.
  return event == CTRL_C_EVENT && !stopIsWanted.exchange(true);
}

constexpr ShellNotification kProgress[] = {ShellNotification::StartProgress, ShellNotification::ChangeProgress,
                                           ShellNotification::UpdateProgress, ShellNotification::StopProgress};

}  // namespace

ShellDisplay::ShellDisplay(IShell& shell) : shell_(shell), isTerminal_(_isatty(_fileno(stdout)) != 0) {
  shellNotifications(ShellNotification::ChangeStatusText).addListener(static_cast<IStatusListener*>(this));
  for (ShellNotification one : kProgress) shell.sender(one).addListener(static_cast<IProgressCallback*>(this));
  SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

ShellDisplay::~ShellDisplay() {
  SetConsoleCtrlHandler(onConsoleEvent, FALSE);
  shellNotifications(ShellNotification::ChangeStatusText).removeListener(static_cast<IStatusListener*>(this));
  for (ShellNotification one : kProgress) shell_.sender(one).removeListener(static_cast<IProgressCallback*>(this));
}

int ShellDisplay::onChangeStatusText(i32, const wchar_t* text) {
  std::printf("  %s\n", shown(text ? text : L"", kSentence).c_str());
  return notify::kTaken;
}

int ShellDisplay::onStartProgress(const Progress& progress) {
  draw(progress);
  return notify::kTaken;
}

int ShellDisplay::onChangeProgress(const Progress& progress) {
  draw(progress);
  return progress.flags & kProgressCanStop && stopIsWanted ? notify::kStop : notify::kTaken;
}

int ShellDisplay::onUpdateProgress(const Progress& progress) { return onStartProgress(progress); }

int ShellDisplay::onStopProgress(const Progress& progress) {
  if (progress.flags & kProgressIsHidden) return notify::kTaken;
  const bool isDone = progress.position >= progress.maximum;
  if (isTerminal_) std::printf("\n");
  if (!isDone) std::printf("  stopped early\n");
  return notify::kTaken;
}

// Redrawn in place on a terminal; a line each time elsewhere.
void ShellDisplay::draw(const Progress& progress) {
  if (progress.flags & kProgressIsHidden) return;
  const i64 range = i64{progress.maximum} - progress.minimum;
  if (range <= 0 && !isTerminal_) return;  // nobody knows how far it is
  const i64 done = std::clamp<i64>(i64{progress.position} - progress.minimum, 0, std::max<i64>(range, 0));
  const auto filled = static_cast<std::size_t>(range > 0 ? done * kBarWidth / range : 0);
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  const int percent = range > 0 ? static_cast<int>(done * 100 / range) : 0;
  std::printf(isTerminal_ ? "\r  [%s] %3d %%" : "  [%s] %3d %%\n", bar.c_str(), percent);
  std::fflush(stdout);
}

}  // namespace host
