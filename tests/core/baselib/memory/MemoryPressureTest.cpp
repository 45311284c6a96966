// Memory that really runs out: each scenario fills the address space of a process of its own.
#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/ManagerState_p.h"
#include "core/baselib/memory/MemoryShell_p.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/objects/Ref.h"
#include "tests/support/HeapFaults.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include <malloc.h>

namespace corvix {
namespace {

constexpr u32 kMegabyte = 1u << 20;

// Reserves what is left of the address space, the large pieces first.
class ReservedSpace {
 public:
  ReservedSpace() {
    for (std::size_t size = 256 * kMegabyte; size >= 64 * 1024; size /= 2) {
      while (count_ < kMost && (pieces_[count_] = VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS))) ++count_;
    }
  }
  ~ReservedSpace() { giveBack(count_); }

  void giveBack(int pieces) {
    for (; pieces > 0 && count_ > 0; --pieces) VirtualFree(pieces_[--count_], 0, MEM_RELEASE);
  }
  void giveBackLargest() { VirtualFree(pieces_[0], 0, MEM_RELEASE); }

 private:
  static constexpr int kMost = 40000;
  static inline void* pieces_[kMost];
  int count_ = 0;
};

// One of 64 bits cannot be filled: the heap has no large block but what was given back meanwhile.
class RefusedSpace {
 public:
  RefusedSpace() { left_ = 0; }
  void giveBackLargest() { left_ += 256 * kMegabyte; }

 private:
  static constexpr std::size_t kLarge = 64 * 1024;
  static void* limited(std::size_t size) {
    if (size >= kLarge && size > left_) return nullptr;
    void* const block = realMalloc_(size);
    if (size >= kLarge && block) left_ -= size;
    return block;
  }
  static void counted(void* block) {
    if (const std::size_t size = block ? _msize(block) : 0; size >= kLarge) left_ += size;
    realFree_(block);
  }

  static inline std::size_t left_ = 0;
  static inline const auto realMalloc_ = mallocSlot;
  static inline const auto realFree_ = freeSlot;
  testing_support::ImportSlot<void* (*)(std::size_t)> mallocs_{mallocSlot, limited};
  testing_support::ImportSlot<void (*)(void*)> frees_{freeSlot, counted};
};

using FullAddressSpace = std::conditional_t<sizeof(void*) == 4, ReservedSpace, RefusedSpace>;

class Holder : public BHibernatable {
  CORVIX_IDENTITY(Holder, 0x83B5D1F0, 0x4C6A27E9, 0x95D0F84B, 0x1E72C36A, BHibernatable)

 public:
  explicit Holder(u32 bytes) : block_(_smalloc(bytes)) {}
  ~Holder() override { _sfree(block_); }
  bool hibernate(bool argument) override {
    wasForced = argument;
    ++calls;
    const bool releases = block_ != nullptr;
    _sfree(std::exchange(block_, nullptr));
    return releases;
  }
  int calls = 0;
  bool wasForced = false;

 private:
  void* block_;
};

class FakeShell : public IMemoryShell {
 public:
  FakeShell() { setMemoryShell(this); }
  ~FakeShell() { setMemoryShell(nullptr); }
  bool askToRetry(u32 kind) override {
    asked += 1 + static_cast<int>(kind);
    if (asked == answersRetryUntil && space) space->giveBackLargest();
    return asked <= answersRetryUntil;
  }
  bool runOnShellThread(void (*)(void*), void*) override { return false; }

  FullAddressSpace* space = nullptr;
  int answersRetryUntil = 0;
  int asked = 0;
};

// A process that overflows its stack or is ended from outside may leave 0.
constexpr int kGoodCode = 42;
const auto kGood = ::testing::ExitedWithCode(kGoodCode);

// Leaves the process with that when all is true, else with the number of the first that is not.
[[noreturn]] void leave(std::initializer_list<bool> all) {
  int code = 0;
  for (bool one : all) {
    ++code;
    if (!one) TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
  }
  TerminateProcess(GetCurrentProcess(), kGoodCode);
  std::abort();
}

const auto kAccessViolation = ::testing::ExitedWithCode(static_cast<int>(0xC0000005));

BMemoryPool& systemPool() { return *BMemoryManager::getSystemPool(); }

void hibernatablesGiveBack() {
  FakeShell shell;
  const auto newest = make<Holder>(8 * kMegabyte);
  const auto last = make<Holder>(1u);
  const FullAddressSpace full;
  const bool isFull = _smalloc(4 * kMegabyte) == nullptr;
  void* const block = systemPool().alloc(4 * kMegabyte);
  leave({isFull, block != nullptr, newest->calls == 1, last->calls == 1, newest->wasForced, shell.asked == 0,
         memory::liveState->reserve != nullptr, allocCSProc().heldCount() == 0});
}

void theProbeDrainsInTime() {
  const auto holder = make<Holder>(8 * kMegabyte);
  const FullAddressSpace full;
  while (_smalloc(0x40000)) {
  }
  for (int i = 0; i < 0x80000 / 64 - 1; ++i) systemPool().free(systemPool().alloc(64));
  const bool notBefore = holder->calls == 0;
  systemPool().free(systemPool().alloc(64));
  const bool atTheLimit = holder->calls == 1;
  leave({notBefore, atTheLimit});
}

void theUserIsAskedUntilThereIsRoom() {
  FakeShell shell;
  FullAddressSpace full;
  shell.space = &full;
  shell.answersRetryUntil = 3;
  void* const block = systemPool().alloc(4 * kMegabyte);
  leave({block != nullptr, shell.asked == 3, allocCSProc().heldCount() == 0});
}

void nullIsReturnedWhereAllowed() {
  FakeShell shell;
  const auto holder = make<Holder>(1u);
  const auto fixed = make<BFixedMemoryPool>(kMegabyte);
  const auto classes = make<BSizeClassMemoryPool>();
  BMemoryManager::allowNULLreturn(true);
  const FullAddressSpace full;
  const bool ofSystem = !systemPool().alloc(4 * kMegabyte) && holder->calls == 1;
  const bool ofFixed = !fixed->alloc(kMegabyte) && fixed->chunkCount() == 0 && fixed->handedOutBytes() == 0;
  const bool ofClasses = !classes->alloc(4 * kMegabyte);
  const bool keptHeld = allocCSProc().heldCount() == 3;
  leave({ofSystem, ofFixed, ofClasses, keptHeld, shell.asked == 0});
}

// An allocation that fails inside `hibernate` must not ask everybody again and again.
class Hungry : public BHibernatable {
  CORVIX_IDENTITY(Hungry, 0x6D40B2A9, 0x4E17C8F3, 0x8A95E02D, 0xB7316C54, BHibernatable)

 public:
  bool hibernate(bool) override {
    if (++calls > 3) return false;
    if (systemPool().alloc(64 * kMegabyte)) return true;
    allocCSProc().leave();
    return false;
  }
  int calls = 0;
};

void allocatingInsideHibernate() {
  const auto hungry = make<Hungry>();
  const auto other = make<Hungry>();
  BMemoryManager::allowNULLreturn(true);
  const FullAddressSpace full;
  const bool refused = !systemPool().alloc(64 * kMegabyte);
  leave({refused, hungry->calls == 1, other->calls == 1, allocCSProc().heldCount() == 1});
}

void refusedRetry() {
  FakeShell shell;
  const FullAddressSpace full;
  systemPool().alloc(4 * kMegabyte);
}

void nobodyToAsk() { systemPool().alloc(0xFFFFFFFF); }

TEST(MemoryPressureDeathTest, Scenarios) {
  EXPECT_EXIT(hibernatablesGiveBack(), kGood, "");
  EXPECT_EXIT(theProbeDrainsInTime(), kGood, "");
  EXPECT_EXIT(theUserIsAskedUntilThereIsRoom(), kGood, "");
  EXPECT_EXIT(nullIsReturnedWhereAllowed(), kGood, "");
  EXPECT_EXIT(allocatingInsideHibernate(), kGood, "");
  EXPECT_EXIT(refusedRetry(), kAccessViolation, "");
  EXPECT_EXIT(nobodyToAsk(), kAccessViolation, "");
}

// What is still registered when the manager goes finds no lock any more, and touches none.
bool isSilentAfterTheEnd() {
  const auto holder = make<Holder>(64u);
  const auto classes = make<BSizeClassMemoryPool>();
  const auto fixed = make<BFixedMemoryPool>(20u);
  void* const block = fixed->alloc(20);
  void* const small = classes->alloc(20);
  memory::endManager();
  std::memset(static_cast<void*>(&allocCSProc()), 0xEE, sizeof(SCriticalSection));  // whoever enters it stays there
  fixed->free(block);
  classes->free(small);
  return !fixed->alloc(20) && !classes->alloc(20) && !classes->alloc(5000) && !fixed->hibernate(true) &&
         !BMemoryManager::getPool(0, 1) && !BMemoryManager::drainMemory(1) &&
         !BMemoryManager::registerHibernatable(holder.get()) && !BMemoryManager::getSystemPool();
}

void lateObjects() { leave({isSilentAfterTheEnd()}); }

TEST(MemoryManagerDeathTest, ObjectsThatOutliveTheManagerTouchNothing) { EXPECT_EXIT(lateObjects(), kGood, ""); }

}  // namespace
}  // namespace corvix
