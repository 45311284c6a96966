// Every allocation that a public operation makes fails in turn, once or from then on.
#include "core/baselib/memory/AutoRealizePool.h"
#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/ManagerState_p.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/memory/SystemMemoryPool.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/Thread.h"
#include "core/baselib/system/TimerTable.h"
#include "tests/core/baselib/memory/HeapFaults.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

namespace corvix {
namespace {

using testing::HeapFaults;

class Quiet : public BHibernatable {
  CORVIX_IDENTITY(Quiet, 0x95E3C07D, 0x4AB1642F, 0x8D20F9B6, 0x37C85E1A, BHibernatable)

 public:
  bool hibernate(bool) override { return false; }
};

class Idle : public BThread {
  CORVIX_IDENTITY(Idle, 0xB08D5E72, 0x4F36A1C9, 0x92E7403B, 0x6C51D8AF, BThread)

 public:
  Idle() : BThread(L"idle") {}
  void run() override {}
};

// Null with the lock held once more is the pools' way to say no; anything else must be a block of that size.
void* tryAlloc(BMemoryPool& from, u32 size) {
  void* const block = from.alloc(size);
  EXPECT_EQ(allocCSProc().heldCount(), block ? 0u : 1u);
  if (block) std::memset(block, 0xCD, size);
  if (!block) allocCSProc().leave();
  return block;
}

void useFixed(BMemoryPool& fixed, u32 size) {
  void* blocks[20];
  for (void*& block : blocks) block = tryAlloc(fixed, size);
  for (void* block : blocks) fixed.free(block);
  fixed.hibernate(true);
}

void useAnySize(BMemoryPool& pool) {
  void* block = tryAlloc(pool, 8);
  if (block) std::memcpy(block, "content", 8);
  for (u32 size : {50u, 1000u, 5000u, 9000u}) {
    void* const larger = block ? pool.realloc(block, size) : nullptr;
    EXPECT_EQ(allocCSProc().heldCount(), 0u);
    if (!larger) continue;
    EXPECT_STREQ(static_cast<char*>(larger), "content");
    block = larger;
  }
  pool.free(block);
  pool.hibernate(true);
}

void useRequested(u32 flags, u32 size) {
  const auto pool = Ref<BMemoryPool>::adopt(BMemoryManager::getPool(flags, size));
  if (!pool) return;
  if (flags & pool::kFixedSize) {
    useFixed(*pool, size);
  } else {
    useAnySize(*pool);
  }
}

struct Operation {
  const char* name;
  void (*call)();
};

const Operation kOperations[] = {
    {"system pool", [] { useAnySize(*BMemoryManager::getSystemPool()); }},
    {"new system pool", [] { useRequested(pool::kNeverShared, 0); }},
    {"fixed pool", [] { useRequested(pool::kNeverShared | pool::kFixedSize, 40); }},
    {"smallest fixed pool", [] { useRequested(pool::kNeverShared | pool::kFixedSize, 4); }},
    {"size classes", [] { useRequested(pool::kNeverShared | pool::kSizeClasses, 0); }},
    {"probe",
     [] {
       BMemoryPool& system = *BMemoryManager::getSystemPool();
       for (int i = 0; i < 3; ++i) system.free(tryAlloc(system, 0x40000));
     }},
    {"hibernatable",
     [] {
       const auto quiet = make<Quiet>();
       BMemoryManager::drainMemory(0);
       BMemoryManager::hibernatePools(true);
       BMemoryManager::scheduleHibernation();
       BMemoryManager::performScheduled();
     }},
    {"hibernate buffer", [] { BMemoryManager::reserveHibernateBuffer(1000); }},
    {"timers",
     [] {
       i32 timers[17];
       for (i32& timer : timers)
         timer = timerData.start(
             60000, [](i32, u32) {}, 0);
       for (i32 timer : timers) timerData.stop(timer);
     }},
    {"delayed release",
     [] {
       auto quiet = make<Quiet>();
       if (BAutoRealizePool::add(quiet.get(), 5)) static_cast<void>(quiet.detach());
       BAutoRealizePool::Clear();
     }},
    {"thread",
     [] {
       const auto idle = make<Idle>();
       idle->start();
     }},
};

TEST(AllocationFailure, SweepOverEveryOperation) {
  make<Quiet>().reset();  // what is made once for the process is made now
  BMemoryManager::allowNULLreturn(true);
  for (const Operation& operation : kOperations) {
    for (const auto mode : {HeapFaults::Mode::Once, HeapFaults::Mode::Always}) {
      operation.call();
      const u32 pools = memory::liveState->pools.count();
      const u32 hibernatables = memory::liveState->hibernatables.count();
      int n = 0;
      for (bool wasHit = true; wasHit; ++n) {
        SCOPED_TRACE(operation.name + std::string(mode == HeapFaults::Mode::Once ? ", once " : ", always ") +
                     std::to_string(n));
        // The manager's own memory is had anew each time.
        memory::ManagerState& state = *memory::liveState;
        _sfree(std::exchange(state.reserve, nullptr));
        _sfree(std::exchange(state.hibernateBuffer, nullptr));
        state.hibernateBufferBytes = 0;
        HeapFaults heap(n + 1, mode);
        try {
          operation.call();
        } catch (const std::bad_alloc&) {  // what `new` does
        }
        wasHit = heap.wasHit();
        heap.disarm();
        EXPECT_EQ(heap.liveBlocks(), (state.reserve != nullptr) + (state.hibernateBuffer != nullptr));
        EXPECT_EQ(allocCSProc().heldCount(), 0u);
        EXPECT_EQ(state.pools.count(), pools);
        EXPECT_EQ(state.hibernatables.count(), hibernatables);
        ASSERT_LT(n, 500);
      }
      RecordProperty(std::string(operation.name), n);
      EXPECT_GT(n, 1) << operation.name << " allocates nothing";
    }
  }
  BMemoryManager::allowNULLreturn(false);
}

// One refusal is made good by the second try, without anybody being asked.
TEST(AllocationFailure, TheSecondTryIsEnough) {
  BMemoryPool& system = *BMemoryManager::getSystemPool();
  HeapFaults heap(1, HeapFaults::Mode::Once);
  void* const block = system.alloc(100);
  EXPECT_NE(block, nullptr);
  system.free(block);
}

}  // namespace
}  // namespace corvix
