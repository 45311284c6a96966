// Counts and refuses the heap's answers to this program, by its import table: the library's objects are part of it,
// the test framework allocates elsewhere.
#pragma once

#include <memory>

namespace corvix::testing {

class HeapFaults {
 public:
  enum class Mode { Once, Always };

  // The n-th allocation from now on fails, n from 1, and in mode Always every later one.
  HeapFaults(int n, Mode mode);
  HeapFaults();  // none fails
  ~HeapFaults();
  HeapFaults(const HeapFaults&) = delete;
  HeapFaults& operator=(const HeapFaults&) = delete;

  void disarm();
  bool wasHit() const;

  // Allocated less freed, since this was made.
  int liveBlocks() const;

  // Calls of malloc and realloc.
  int requests() const;

 private:
  struct Slots;
  std::unique_ptr<Slots> slots_;
};

}  // namespace corvix::testing
