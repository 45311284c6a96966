// StatusBar: texts of the program, and how far long work is. A progress is shown once it has taken 300 ms, with a
// button that ends it early where that is possible; the button works while the program works. [shell thread]
#pragma once

#include "plugins/windows/Look.h"
#include "shell/Progress.h"

#include <map>
#include <string>
#include <vector>

namespace corvix::gui {

class StatusBar {
 public:
  static constexpr WORD kStop = 0x300;

  bool make(HWND parent);
  HWND window() const noexcept { return bar_; }
  int height() const;
  void adopt(const windows::Look& look);
  void place(const RECT& area);

  void setText(i32 pane, const wchar_t* text);

  void start(const Progress& progress);
  int change(const Progress& progress);  // notify::kStop when the user wants it to end
  void stop(const Progress& progress);
  void stopPressed();  // WM_COMMAND of the button

 private:
  struct Running {
    Progress now;
    ULONGLONG startMs;
    bool isStopped = false;
  };
  Running* shown();
  void show(Running* running);
  void arrange();
  void takeInput();

  HWND bar_ = nullptr, progress_ = nullptr, stop_ = nullptr;
  const windows::Look* look_ = nullptr;
  std::vector<std::wstring> texts_ = {L""};
  std::map<i32, Running> running_;
  i32 shownId_ = 0;
  bool isShown_ = false, isTaking_ = false;
};

}  // namespace corvix::gui
