// Crew: threads that work together with the calling one, and sleep in between.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/threads/Thread.h"

#include <vector>

#include <windows.h>

namespace corvix::smooth {

class Crew {
 public:
  class Work {
   public:
    // By every thread at once, numbered from 0 on.
    virtual void work(u32 number) noexcept = 0;

   protected:
    ~Work() = default;
  };

  // Of so many threads, this one counted; of fewer where the system has no more. Throws std::bad_alloc.
  explicit Crew(i32 threads);
  ~Crew();  // waits for their end
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;

  // Returns when all that began with it are done; who wakes up later does not begin any more. The calling thread, which
  // always does, has number 0.
  void run(Work& work) noexcept;

 private:
  class Helper;
  void help(u32 number) noexcept;
  void hire(i32 threads);
  void dismiss() noexcept;

  std::vector<Ref<BThread>, HeapAllocator<Ref<BThread>>> helpers_;
  SRWLOCK lock_ = SRWLOCK_INIT;  // of what follows
  CONDITION_VARIABLE begun_ = CONDITION_VARIABLE_INIT;
  CONDITION_VARIABLE done_ = CONDITION_VARIABLE_INIT;
  Work* work_ = nullptr;  // that may be begun
  u32 round_ = 0;
  std::size_t busy_ = 0;
  bool isOver_ = false;
};

}  // namespace corvix::smooth
