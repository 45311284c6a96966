#include "shell/TaskQueue_p.h"

#include "core/baselib/system/Log.h"
#include "shell/Thrown_p.h"

namespace corvix {

namespace {

constexpr UINT kWake = WM_APP;

using Lock = SCriticalSection::Lock;

}  // namespace

// A window of a class of the system's: the library has none to take back when it goes.
TaskQueue::TaskQueue()
    : window_(CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
  if (!window_) return;
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(onMessage));
}

TaskQueue::~TaskQueue() {
  if (!window_) return;
  SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
  DestroyWindow(window_);
}

bool TaskQueue::add(void (*function)(void*), void* argument) noexcept {
  Lock lock(section_);
  if (isClosed_) return false;
  try {
    waiting_.push_back({function, argument});
  } catch (const std::bad_alloc&) {
    return false;
  }
  wake();
  return true;
}

void TaskQueue::wake() noexcept {
  if (window_) PostMessageW(window_, kWake, 0, 0);
}

bool TaskQueue::runOne() {
  Lock lock(section_);
  if (waiting_.empty()) return false;
  const Task task = waiting_.front();
  waiting_.pop_front();
  lock.release();
  try {
    task.function(task.argument);
  } catch (...) {
    // Nobody is left to catch it: the system's frames do not pass it on.
    sWriteLog(L"A task of the shell's thread threw: %s\n", textOfThrown().c_str());
  }
  return true;
}

void TaskQueue::runWaiting() {
  std::size_t count;
  {
    Lock lock(section_);
    count = waiting_.size();
  }
  while (count-- && runOne()) {
  }
}

void TaskQueue::close() {
  {
    Lock lock(section_);
    isClosed_ = true;
  }
  while (runOne()) {
  }
}

LRESULT CALLBACK TaskQueue::onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  if (message != kWake) return DefWindowProcW(window, message, wParam, lParam);
  if (auto* const queue = reinterpret_cast<TaskQueue*>(GetWindowLongPtrW(window, GWLP_USERDATA))) queue->runWaiting();
  return 0;
}

}  // namespace corvix
