// Every allocation that a public operation makes fails in turn, once or from then on.
#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/ManagerState_p.h"
#include "core/baselib/memory/SystemMemoryPool.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/CriticalSection.h"
#include "tests/library/PublicOperations.h"
#include "tests/support/OwnRegistry.h"
#include "tests/support/RuntimeFaults.h"
#include "tests/support/SweepSteps.h"

#include <gtest/gtest.h>

#include <utility>

namespace corvix {
namespace {

using testing_support::HeapFaults;
using testing_support::PublicOperation;
using testing_support::SweepSteps;

class Listening : public BSmartObject, public IDestroyListener {
  CORVIX_IDENTITY(Listening, 0x1E5D83B6, 0x4A70C92F, 0x8F3BD614, 0x60A27EC5, BSmartObject, IDestroyListener)

 public:
  int onDestroy(IBRTTISupport*) override {
    ++told;
    return notify::kGoOn;
  }
  int told = 0;
};

// The number of allocations of the operation.
int sweep(const PublicOperation& operation, HeapFaults::Mode mode) {
  const u32 pools = memory::liveState->pools.count();
  const u32 hibernatables = memory::liveState->hibernatables.count();
  const testing_support::OwnTempFolder temporary;
  SweepSteps steps;
  const testing_support::Findings findings;
  for (bool wasHit = true; wasHit && findings.none(); steps.next()) {
    SCOPED_TRACE(operation.name + std::string(mode == HeapFaults::Mode::Once ? ", once " : ", always ") +
                 std::to_string(steps.at()));
    // The manager's own memory is had anew each time.
    memory::ManagerState& state = *memory::liveState;
    _sfree(std::exchange(state.reserve, nullptr));
    _sfree(std::exchange(state.hibernateBuffer, nullptr));
    state.hibernateBufferBytes = 0;
    HeapFaults heap(steps.at(), mode);
    const testing_support::RuntimeFaults runtime;
    try {
      operation.call();
    } catch (const std::bad_alloc&) {  // what `new` does
    }
    wasHit = heap.wasHit();
    heap.disarm();
    EXPECT_EQ(heap.liveBlocks(), (state.reserve != nullptr) + (state.hibernateBuffer != nullptr));
    EXPECT_EQ(allocCSProc().heldCount(), 0u);
    EXPECT_EQ(dataCSProc().heldCount(), 0u);
    EXPECT_EQ(state.pools.count(), pools);
    EXPECT_EQ(state.hibernatables.count(), hibernatables);
  }
  EXPECT_EQ(temporary.files(), 0) << operation.name;
  return steps.at();
}

TEST(AllocationFailure, SweepOverEveryOperation) {
  const testing_support::OwnRegistry registry;
  make<Listening>().reset();  // what is made once for the process is made now
  BMemoryManager::allowNULLreturn(true);
  for (const PublicOperation& operation : testing_support::publicOperations()) {
    for (const auto mode : {HeapFaults::Mode::Once, HeapFaults::Mode::Always}) {
      operation.call();
      const int n = sweep(operation, mode);
      RecordProperty(std::string(operation.name), n);
      EXPECT_GT(n, 2) << operation.name << " allocates nothing";
    }
  }
  BMemoryManager::allowNULLreturn(false);
}

// What gives memory back needs none.
TEST(AllocationFailure, GivingUpAllocatesNothing) {
  Listening own[3], everybodys;
  auto object = make<Listening>();
  auto second = make<Listening>();
  for (Listening& one : own) {
    object->addListener(static_cast<IDestroyListener*>(&one), 3 - static_cast<i32>(&one - own));
    second->addListener(static_cast<IDestroyListener*>(&one));
  }
  destroyNotifications().addListener(static_cast<IDestroyListener*>(&everybodys));
  HeapFaults heap(1, HeapFaults::Mode::Always);
  object.reset();
  for (Listening& one : own) second->removeListener(static_cast<IDestroyListener*>(&one));
  second.reset();
  destroyNotifications().removeListener(static_cast<IDestroyListener*>(&everybodys));
  EXPECT_EQ(heap.requests(), 0);
  for (const Listening& one : own) EXPECT_EQ(one.told, 1);
  EXPECT_EQ(everybodys.told, 2);
}

// One refusal is made good by the second try, without anybody being asked.
TEST(AllocationFailure, TheSecondTryIsEnough) {
  BMemoryPool& system = *BMemoryManager::getSystemPool();
  HeapFaults heap(1, HeapFaults::Mode::Once);
  void* const block = system.alloc(100);
  EXPECT_NE(block, nullptr);
  system.free(block);
}

// A second call for nothing would free the buffer and leave it in use.
TEST(AllocationFailure, AnEmptyHibernateBufferStaysOne) {
  memory::ManagerState& state = *memory::liveState;
  _sfree(std::exchange(state.hibernateBuffer, nullptr));
  state.hibernateBufferBytes = 0;
  const HeapFaults heap;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(BMemoryManager::reserveHibernateBuffer(0));
  EXPECT_EQ(heap.liveBlocks(), 1);
  EXPECT_NE(BMemoryManager::getHibernateBuffer(), nullptr);
}

}  // namespace
}  // namespace corvix
