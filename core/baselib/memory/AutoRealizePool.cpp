#include "core/baselib/memory/AutoRealizePool.h"

#include "core/baselib/memory/MemoryShell_p.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/threads/TimerTable.h"

#include <new>
#include <utility>

#include <windows.h>

namespace corvix {

namespace {

constexpr u32 kTickMs = 1000;

struct Node {
  IBRemoteRemovable* object;
  u32 ticks;
  Node* previous;
  Node* next;
};

class NodeList {
 public:
  Node* head() const noexcept { return head_; }

  void append(Node* node) noexcept {
    node->previous = tail_;
    node->next = nullptr;
    (tail_ ? tail_->next : head_) = node;
    tail_ = node;
  }

  void unlink(Node* node) noexcept {
    (node->previous ? node->previous->next : head_) = node->next;
    (node->next ? node->next->previous : tail_) = node->previous;
  }

  NodeList take() noexcept { return std::exchange(*this, NodeList()); }

  // Each object is told when its node is gone already. One that throws does not keep the others.
  void releaseAll() noexcept {
    while (Node* const node = head_) {
      unlink(node);
      IBRemoteRemovable* const object = node->object;
      _sfree(node);
      try {
        object->release();
      } catch (...) {
        sWriteLog("An object that was to be released later has thrown\n");
      }
    }
  }

 private:
  Node* head_ = nullptr;
  Node* tail_ = nullptr;
};

// After the queue's end, while the library's other statics go, its lock is not touched.
constinit bool hasEnded = false;

struct Queue {
  SCriticalSection section;
  NodeList nodes;
  i32 timer = TimerData::kNoTimer;
  DWORD timerThread = 0;

  ~Queue() {
    hasEnded = true;
    // The objects may belong to modules that are gone: only the entries are freed.
    while (Node* const node = nodes.head()) {
      nodes.unlink(node);
      _sfree(node);
    }
  }
} queue;

// At once when there is no shell: a program that uses this room alone has one thread that matters.
bool onShellThread(void (*function)(void*), i32 argument = 0) {
  void* const passed = reinterpret_cast<void*>(static_cast<std::intptr_t>(argument));
  IMemoryShell* const shell = memoryShell();
  if (!shell) {
    function(passed);
    return true;
  }
  try {
    return shell->runOnShellThread(function, passed);
  } catch (const std::bad_alloc&) {  // the next `add` or tick tries again
    return false;
  }
}

i32 timerOf(void* argument) noexcept { return static_cast<i32>(reinterpret_cast<std::intptr_t>(argument)); }

void tick(i32 timer, u32);

// A system's timer belongs to the thread that starts it: that is the shell's, whoever added the object.
void startTimer(void*) {
  if (hasEnded) return;
  const SCriticalSection::Lock lock(queue.section);
  if (queue.timer != TimerData::kNoTimer || !queue.nodes.head()) return;
  queue.timer = timerData.start(kTickMs, tick, 0);
  queue.timerThread = GetCurrentThreadId();
}

void stopTimer(void* timer) { timerData.stop(timerOf(timer)); }

// The expiry pass.
void expire(void* timer) {
  if (hasEnded) return;
  NodeList expired;
  {
    const SCriticalSection::Lock lock(queue.section);
    if (queue.timer == TimerData::kNoTimer || queue.timer != timerOf(timer)) return;  // stopped after the tick
    timerData.stop(std::exchange(queue.timer, TimerData::kNoTimer));
    for (Node* node = queue.nodes.head(); node;) {
      Node* const next = node->next;
      if (node->ticks == 0) {
        queue.nodes.unlink(node);
        expired.append(node);
      } else {
        --node->ticks;
      }
      node = next;
    }
  }
  expired.releaseAll();
  startTimer(nullptr);
}

void tick(i32 timer, u32) { onShellThread(expire, timer); }

}  // namespace

bool BAutoRealizePool::add(IBRemoteRemovable* object, u32 ticks) noexcept {
  if (hasEnded || !object) return false;
  auto* const node = static_cast<Node*>(_smalloc(sizeof(Node)));
  if (!node) return false;
  bool needsTimer = false;
  {
    const SCriticalSection::Lock lock(queue.section);
    *node = {object, ticks, nullptr, nullptr};
    queue.nodes.append(node);
    needsTimer = queue.timer == TimerData::kNoTimer;
  }
  if (needsTimer) onShellThread(startTimer);
  return true;
}

void BAutoRealizePool::Clear() {
  if (hasEnded) return;
  i32 timer;
  bool isOurs;
  {
    const SCriticalSection::Lock lock(queue.section);
    timer = std::exchange(queue.timer, TimerData::kNoTimer);
    isOurs = queue.timerThread == GetCurrentThreadId();
  }
  if (timer != TimerData::kNoTimer && (isOurs || !onShellThread(stopTimer, timer))) timerData.stop(timer);
  for (;;) {
    NodeList taken;
    {
      const SCriticalSection::Lock lock(queue.section);
      taken = queue.nodes.take();
    }
    if (!taken.head()) return;
    taken.releaseAll();
  }
}

}  // namespace corvix
