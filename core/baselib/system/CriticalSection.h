// SCriticalSection: a recursive lock of one process, an owner of one critical section of the system.
#pragma once

#include "core/baselib/Api.h"

namespace corvix {

class CORVIX_API SCriticalSection {
 public:
  SCriticalSection() noexcept;
  ~SCriticalSection();
  SCriticalSection(const SCriticalSection&) = delete;
  SCriticalSection& operator=(const SCriticalSection&) = delete;

  // While the process ends it does not wait: the caller is the only thread that is left.
  void enter() noexcept;
  bool tryEnter() noexcept;
  void leave() noexcept;

  // How often the calling thread holds it: 0 when it does not.
  u32 heldCount() const noexcept;

  // Holds the lock for a block of code, or until `release`.
  class Lock {
   public:
    explicit Lock(SCriticalSection& section) noexcept : section_(&section) { section.enter(); }
    ~Lock() { release(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void release() noexcept {
      if (section_) section_->leave();
      section_ = nullptr;
    }

   private:
    SCriticalSection* section_;
  };

 private:
  void* section_[6];  // the system's CRITICAL_SECTION
};

}  // namespace corvix
