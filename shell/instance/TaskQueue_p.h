// TaskQueue: functions that wait for the shell's thread. A window of messages only, made by that thread, has
// the program's message loop call them, also while a message box or a menu has a loop of its own.
#pragma once

#include "core/baselib/system/CriticalSection.h"

#include <deque>

#include <windows.h>

namespace corvix {

class TaskQueue {
 public:
  // On the shell's thread.
  TaskQueue();
  ~TaskQueue();
  TaskQueue(const TaskQueue&) = delete;
  TaskQueue& operator=(const TaskQueue&) = delete;

  // False when it is closed or memory is short. [any thread]
  bool add(void (*function)(void*), void* argument) noexcept;

  // Does what waits now; what that adds is left for later.
  void runWaiting();

  // Does everything that waits, and takes in nothing from then on. While the process ends, what waits is left undone.
  void close();

 private:
  struct Task {
    void (*function)(void*);
    void* argument;
  };

  static LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
  void onWake();
  bool runOne();
  void wake() noexcept;

  const HWND window_;
  SCriticalSection section_;
  std::deque<Task> waiting_;
  bool isClosed_ = false;
  bool isWoken_ = false;  // a message is under way, posted at wokenAt_
  DWORD wokenAt_ = 0;
};

}  // namespace corvix
