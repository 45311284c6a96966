// Tasks for the shell's thread against a queue behind a lock that posts one message for a whole batch. Both go through
// the message loop of this thread.
#include "bench/Bench.h"
#include "core/baselib/system/CriticalSection.h"
#include "shell/Shell.h"

#include <deque>
#include <stdexcept>
#include <string>

#include <windows.h>

namespace corvix::bench {
namespace {

using Task = void (*)(void*);

class PeerQueue {
 public:
  PeerQueue()
      : window_(CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
    if (!window_) throw std::runtime_error("no window for messages");
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(onMessage));
  }
  ~PeerQueue() { DestroyWindow(window_); }

  void add(Task task, void* argument) {
    const SCriticalSection::Lock lock(section_);
    if (waiting_.empty()) PostMessageW(window_, WM_APP, 0, 0);
    waiting_.emplace_back(task, argument);
  }

 private:
  using Tasks = std::deque<std::pair<Task, void*>>;

  static LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_APP) return DefWindowProcW(window, message, wParam, lParam);
    reinterpret_cast<PeerQueue*>(GetWindowLongPtrW(window, GWLP_USERDATA))->run();
    return 0;
  }

  void run() {
    Tasks batch;
    {
      const SCriticalSection::Lock lock(section_);
      batch.swap(waiting_);
    }
    for (const auto& [task, argument] : batch) task(argument);
  }

  HWND window_;
  SCriticalSection section_;
  Tasks waiting_;
};

// An operation is a batch: so many tasks are handed over, and the messages are delivered until all are done.
template <class Add>
Work batches(u32 size, Add add) {
  return [size, add](std::uint64_t count) {
    u32 done = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
      done = 0;
      for (u32 task = 0; task < size; ++task) add([](void* counter) { ++*static_cast<u32*>(counter); }, &done);
      MSG message;
      while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
      if (done != size) throw std::runtime_error("a task was not done");
    }
  };
}

void measureTasks(Report& report) {
  IShell& shell = *IShell::getInstance();
  PeerQueue peer;
  for (const auto& [size, wanted] : {std::pair(1u, 0.0), {1000u, 2.0}}) {
    report.compare("tasks for the shell's thread, a batch of " + std::to_string(size),
                   "a locked queue, a message a batch", wanted,
                   batches(size, [&](Task task, void* argument) { shell.runOnShellThread(task, argument); }),
                   batches(size, [&](Task task, void* argument) { peer.add(task, argument); }));
  }
}

const Area area{"tasks", measureTasks};

}  // namespace
}  // namespace corvix::bench
