// Shows on the console what the shell's notifications tell: status texts as lines, progress as a bar. A user
// who stops the program with Ctrl+C stops the work that can be stopped.
#pragma once

#include "shell/Shell.h"

#include <atomic>

namespace host {

class ShellDisplay final : public corvix::IStatusListener, public corvix::IProgressCallback {
  CORVIX_IDENTITY(ShellDisplay, 0x9756A763, 0xF1FE93BE, 0x84A3334E, 0xD97FEC1C, corvix::IStatusListener,
                  corvix::IProgressCallback)

 public:
  // Listens as long as it lives.
  explicit ShellDisplay(corvix::IShell& shell);
  ~ShellDisplay() override;

  int onChangeStatusText(corvix::i32 pane, const wchar_t* text) override;
  int onStartProgress(const corvix::Progress& progress) override;
  int onChangeProgress(const corvix::Progress& progress) override;
  int onUpdateProgress(const corvix::Progress& progress) override;
  int onStopProgress(const corvix::Progress& progress) override;

 private:
  void draw(const corvix::Progress& progress);

  corvix::IShell& shell_;
  const bool isTerminal_;
};

}  // namespace host
