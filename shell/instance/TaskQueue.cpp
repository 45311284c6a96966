#include "shell/instance/TaskQueue_p.h"

#include "core/baselib/system/ForeignCall.h"
#include "core/baselib/system/ProcessEnd_p.h"

namespace corvix {

namespace {

constexpr UINT kWake = WM_APP;
constexpr DWORD kLostMs = 1000;  // a message that nobody has delivered for so long may have been thrown away

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
  // The end of the process takes the window away by itself, and the system's own locks may be those of a thread that is
  // gone.
  if (!window_ || isProcessEnding()) return;
  SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
  DestroyWindow(window_);
}

bool TaskQueue::add(void (*function)(void*), void* argument) noexcept {
  Lock lock(section_);
  if (isClosed_ || !function) return false;
  try {
    waiting_.push_back({function, argument});
  } catch (const std::bad_alloc&) {
    return false;
  }
  wake();
  return true;
}

// One message is under way for all that waits. The lock is held.
void TaskQueue::wake() noexcept {
  const DWORD now = GetTickCount();
  if (!window_ || (isWoken_ && now - wokenAt_ < kLostMs)) return;
  isWoken_ = PostMessageW(window_, kWake, 0, 0) != FALSE;
  wokenAt_ = now;
}

// A task may have a message loop of its own, which then calls those behind it: they need a message before it begins.
void TaskQueue::onWake() {
  {
    Lock lock(section_);
    isWoken_ = false;
    if (waiting_.size() > 1) wake();
  }
  runWaiting();
}

bool TaskQueue::runOne() {
  Lock lock(section_);
  if (waiting_.empty()) return false;
  const Task task = waiting_.front();
  waiting_.pop_front();
  lock.release();
  callForeign(codeOf(task.function), L"a task of the shell's thread", [&task] { task.function(task.argument); });
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
  while (!isProcessEnding() && runOne()) {
  }
}

LRESULT CALLBACK TaskQueue::onMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  if (message != kWake) return DefWindowProcW(window, message, wParam, lParam);
  if (auto* const queue = reinterpret_cast<TaskQueue*>(GetWindowLongPtrW(window, GWLP_USERDATA))) queue->onWake();
  return 0;
}

}  // namespace corvix
