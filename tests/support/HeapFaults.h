// Counts and refuses the heap's answers to this program, by its import table: the library's objects are part of it,
// the test framework allocates elsewhere.
#pragma once

#include <atomic>
#include <climits>
#include <cstddef>

#include "tests/support/ImportSlot.h"

extern "C" {
extern void* (*mallocSlot)(std::size_t)CORVIX_IMPORTED(malloc, "");
extern void* (*reallocSlot)(void*, std::size_t)CORVIX_IMPORTED(realloc, "");
extern void (*freeSlot)(void*) CORVIX_IMPORTED(free, "");
}

namespace corvix::testing_support {

class HeapFaults {
 public:
  enum class Mode { Once, Always };

  // The n-th allocation from now on fails, n from 1, and in mode Always every later one.
  explicit HeapFaults(int n = INT_MAX, Mode mode = Mode::Once) {
    asked_ = 0;
    live_ = 0;
    failFrom_ = n;
    failTo_ = mode == Mode::Once ? n : INT_MAX;
  }

  // Nothing is refused meanwhile.
  class Pause {
   public:
    Pause() : from_(failFrom_), to_(failTo_) { failFrom_ = failTo_ = INT_MAX; }
    ~Pause() {
      failFrom_ = from_;
      failTo_ = to_;
    }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    int from_, to_;
  };

  void disarm() { failFrom_ = failTo_ = INT_MAX; }
  bool wasHit() const { return asked_ >= failFrom_; }

  // Allocated less freed, since this was made.
  int liveBlocks() const { return live_; }

  // Calls of malloc and realloc.
  int requests() const { return asked_; }

 private:
  friend class RuntimeFaults;

  static bool refuse() {
    const int n = ++asked_;
    return n >= failFrom_ && n <= failTo_;
  }
  static void* countedMalloc(std::size_t size) {
    void* const block = refuse() ? nullptr : realMalloc_(size);
    if (block) ++live_;
    return block;
  }
  static void* countedRealloc(void* block, std::size_t size) {
    void* const moved = refuse() ? nullptr : realRealloc_(block, size);
    if (moved && !block) ++live_;
    return moved;
  }
  static void countedFree(void* block) {
    if (block) --live_;
    realFree_(block);
  }

  static inline std::atomic<int> asked_, live_, failFrom_, failTo_;
  static inline const auto realMalloc_ = mallocSlot;
  static inline const auto realRealloc_ = reallocSlot;
  static inline const auto realFree_ = freeSlot;

  ImportSlot<void* (*)(std::size_t)> mallocs_{mallocSlot, countedMalloc};
  ImportSlot<void* (*)(void*, std::size_t)> reallocs_{reallocSlot, countedRealloc};
  ImportSlot<void (*)(void*)> frees_{freeSlot, countedFree};
};

}  // namespace corvix::testing_support
