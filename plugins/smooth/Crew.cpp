#include "plugins/smooth/Crew_p.h"

namespace corvix::smooth {

class Crew::Helper final : public BThread {
 public:
  Helper(Crew& crew, u32 number) : BThread(L"Smooth drawing"), crew_(crew), number_(number) {}

 protected:
  void run() override { crew_.help(number_); }

 private:
  Crew& crew_;
  u32 number_;
};

Crew::Crew(i32 threads) {
  try {
    hire(threads);
  } catch (const std::bad_alloc&) {
    dismiss();
    throw;
  }
}

Crew::~Crew() { dismiss(); }

void Crew::hire(i32 threads) {
  for (i32 number = 1; number < threads; ++number) {
    Ref<BThread> helper = make<Helper>(*this, static_cast<u32>(number));
    helpers_.reserve(helpers_.size() + 1);
    if (!helper->start()) return;
    helpers_.push_back(std::move(helper));
  }
}

void Crew::dismiss() noexcept {
  AcquireSRWLockExclusive(&lock_);
  isOver_ = true;
  ReleaseSRWLockExclusive(&lock_);
  WakeAllConditionVariable(&begun_);
  for (const Ref<BThread>& helper : helpers_) helper->join();
  helpers_.clear();
}

void Crew::help(u32 number) noexcept {
  u32 seen = 0;
  AcquireSRWLockExclusive(&lock_);
  while (true) {
    while (!isOver_ && (round_ == seen || !work_)) SleepConditionVariableSRW(&begun_, &lock_, INFINITE, 0);
    if (isOver_) break;
    seen = round_;
    ++busy_;
    Work& work = *work_;
    ReleaseSRWLockExclusive(&lock_);
    work.work(number);
    AcquireSRWLockExclusive(&lock_);
    if (--busy_ == 0) WakeConditionVariable(&done_);
  }
  ReleaseSRWLockExclusive(&lock_);
}

void Crew::run(Work& work) noexcept {
  AcquireSRWLockExclusive(&lock_);
  work_ = &work;
  ++round_;
  ReleaseSRWLockExclusive(&lock_);
  WakeAllConditionVariable(&begun_);
  work.work(0);
  AcquireSRWLockExclusive(&lock_);
  work_ = nullptr;
  while (busy_) SleepConditionVariableSRW(&done_, &lock_, INFINITE, 0);
  ReleaseSRWLockExclusive(&lock_);
}

}  // namespace corvix::smooth
