#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/memory/SystemMemoryPool.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/CriticalSection.h"
#include "tests/support/HeapFaults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace corvix {
namespace {

using PoolRef = Ref<BMemoryPool>;

// The figures below are those of 32 bits: of 64 a block has a word of twice the size in front, and lies aligned to it.
constexpr u32 kWordBytes = sizeof(void*);
constexpr u32 kMore = kWordBytes - 4;
constexpr u32 aligned(u32 size) { return kMore ? (size + 7) / 8 * 8 : size; }
constexpr u32 kChunkHeader = kWordBytes + 8;

PoolRef pool(u32 flags, u32 size) { return PoolRef::adopt(BMemoryManager::getPool(flags, size)); }

struct ChoiceRow {
  u32 flags;
  u32 size;
  i32 kind;
  bool isShared;  // a second request of the same gets the same pool
  const char* why;
};

const ChoiceRow kChoiceRows[] = {
    {0, 1, pool::kSystem, true, "nothing asked"},
    {0x20, 1, pool::kSystem, false, "never shared"},
    {0x04, 24, pool::kFixed, true, "fixed"},
    {0x05, 24, pool::kSystem, true, "not fixed, so plain"},
    {0x06, 24, pool::kSystem, true, "plain wins over fixed"},
    {0x40, 24, pool::kSizeClass, true, "size classes"},
    {0x42, 24, pool::kSystem, true, "plain wins over size classes"},
    {0x44, 24, pool::kFixed, true, "fixed wins over size classes"},
    {0x45, 24, pool::kSizeClass, false, "wants size classes that none accepts"},
    {0x80, 24, pool::kSystem, true, "unknown flags"},
};

TEST(GetPool, Rows) {
  for (const ChoiceRow& row : kChoiceRows) {
    SCOPED_TRACE(row.why);
    const PoolRef first = pool(row.flags, row.size);
    const u32 references = first->refCount();
    const PoolRef second = pool(row.flags, row.size);
    EXPECT_EQ(first->poolKind(), row.kind);
    EXPECT_EQ(first == second, row.isShared);
    EXPECT_EQ(first->refCount(), references + row.isShared);
  }
  EXPECT_EQ(pool(0, 7).get(), BMemoryManager::getSystemPool());
}

// A request for a fixed size may get a part of somebody's size-class pool.
TEST(GetPool, FixedRequestFindsTheNewestSubPool) {
  auto classes = make<BSizeClassMemoryPool>();
  PoolRef found;
  for (u32 size : {12u, 20u, 36u, 68u, 132u, 260u, 516u, 1028u}) {
    found = pool(pool::kFixedSize, size + kMore);
    EXPECT_EQ(found->refCount(), 1u) << size;  // the size-class pool's and ours
    EXPECT_EQ(found->blockSize(nullptr), size + kMore);
  }
  classes.reset();
  EXPECT_EQ(found->refCount(), 0u);
  found->free(std::memset(found->alloc(1028), 0x5A, 1028));
}

struct ClassRow {
  u32 size;
  u32 rawBytes;
  u32 classWord;
};

const ClassRow kClassRows[] = {
    {0, 12, 0},    {8, 12, 0},    {9, 20, 1},     {16, 20, 1},     {17, 36, 2},      {32, 36, 2},
    {33, 68, 3},   {64, 68, 3},   {65, 132, 4},   {128, 132, 4},   {129, 260, 5},    {256, 260, 5},
    {257, 516, 6}, {512, 516, 6}, {513, 1028, 7}, {1024, 1028, 7}, {1025, 1029, 11}, {300000, 300004, 11},
};

TEST(SizeClassPool, Rows) {
  const auto classes = make<BSizeClassMemoryPool>();
  for (const ClassRow& row : kClassRows) {
    void* const block = classes->alloc(row.size);
    EXPECT_EQ(static_cast<u32*>(block)[-1], row.classWord) << row.size;
    EXPECT_EQ(classes->blockSize(block), row.rawBytes + kMore) << row.size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % kWordBytes, 0u) << row.size;
    std::memset(block, 0x5A, row.size);
    classes->free(block);
  }
  classes->free(nullptr);
  EXPECT_EQ(classes->blockSize(nullptr), 0u);
}

TEST(SizeClassPool, ReallocKeepsContentOverEveryClass) {
  const auto classes = make<BSizeClassMemoryPool>();
  char* block = static_cast<char*>(classes->realloc(nullptr, 8));
  std::memcpy(block, "content", 8);
  for (u32 size : {4u, 8u, 9u, 300u, 1024u, 1025u, 100000u, 5u}) {
    char* const before = block;
    const bool fits =
        static_cast<u32*>(static_cast<void*>(block))[-1] < 8 && size + kWordBytes <= classes->blockSize(block);
    block = static_cast<char*>(classes->realloc(block, size));
    EXPECT_STREQ(std::string(block, 5).c_str(), "conte") << size;
    EXPECT_TRUE(!fits || block == before) << size;
  }
  EXPECT_EQ(static_cast<u32*>(static_cast<void*>(block))[-1], 11u);  // what came from the parent stays there
  classes->free(block);
}

// What relies on it: readers of the counters know that they drift with requests below the block size.
TEST(FixedPool, CountsRequestsInAndWholeBlocksOut) {
  const auto fixed = make<BFixedMemoryPool>(20u);
  void* const block = fixed->alloc(10);
  EXPECT_EQ(fixed->handedOutBytes(), 10u);
  fixed->free(block);
  EXPECT_EQ(fixed->handedOutBytes(), static_cast<u32>(-10));
}

TEST(FixedPool, NumbersOfChunks) {
  for (u32 size : {1u, 4u, 5u, 7u, 8u, 9u, 20u, 1028u}) {
    SCOPED_TRACE(size);
    const auto fixed = make<BFixedMemoryPool>(size);
    const u32 stride = std::max(aligned(size), 2 * kWordBytes);
    EXPECT_EQ(fixed->blockSize(nullptr), std::max(size, 4u));
    EXPECT_EQ(fixed->chunkBytes(), stride * 16 + kChunkHeader);
    std::vector<char*> blocks;
    for (u32 i = 0; i < 33; ++i) blocks.push_back(static_cast<char*>(fixed->alloc(size)));
    EXPECT_EQ(fixed->chunkCount(), 3u);
    EXPECT_EQ(blocks[1], blocks[0] + stride);
    EXPECT_EQ(fixed->realloc(blocks[0], 5000), blocks[0]);
    for (u32 i = 0; i < 33; ++i) std::memset(blocks[i], static_cast<int>(i), size);
    for (u32 i = 1; i < 33; i += 2) fixed->free(blocks[i]);
    for (u32 i = 0; i < 33; i += 2) {
      EXPECT_EQ(static_cast<u32>(std::count(blocks[i], blocks[i] + size, static_cast<char>(i))), size) << i;
    }
    EXPECT_FALSE(fixed->hibernate(true));
    for (u32 i = 0; i < 33; i += 2) fixed->free(blocks[i]);
    EXPECT_EQ(fixed->handedOutBytes(), 33 * (size - std::max(size, 4u)));
    EXPECT_TRUE(fixed->hibernate(false));
    EXPECT_EQ(fixed->chunkCount(), 0u);
    EXPECT_EQ(fixed->payloadBytes(), 0u);
    EXPECT_FALSE(fixed->hibernate(true));
  }
}

// Hands out slices of one buffer in the order it is told, so that chunks lie where a test wants them.
class SlicePool : public BMemoryPool {
  CORVIX_IDENTITY(SlicePool, 0x2B1C93E7, 0x4F08D5A6, 0x8C7E1B40, 0xD3956A2F, BMemoryPool)

 public:
  explicit SlicePool(std::vector<int> order) : order_(std::move(order)) {}
  char* slice(int index) { return buffer_ + index * 512; }
  void* alloc(u32) override { return slice(order_[next_++]); }
  void free(void* block) override { freed.push_back(static_cast<int>((static_cast<char*>(block) - buffer_) / 512)); }
  void* realloc(void* block, u32) override { return block; }
  u32 blockSize(void*) override { return 512; }
  i32 poolKind() const noexcept override { return 77; }
  bool accepts(u32, u32) const noexcept override { return false; }

  std::vector<int> freed;

 private:
  std::vector<int> order_;
  std::size_t next_ = 0;
  alignas(8) char buffer_[16 * 512];
};

// The order of chunks and free blocks after a compaction is part of what callers see: it decides which block is
// handed out next.
TEST(FixedPool, CompactionReleasesFreeChunksAndOrdersTheRest) {
  const auto parent = make<SlicePool>(std::vector<int>{3, 0, 5, 1, 4});
  auto fixed = make<BFixedMemoryPool>(20u, parent.get());
  std::vector<char*> blocks;
  for (int i = 0; i < 5 * 16; ++i) blocks.push_back(static_cast<char*>(fixed->alloc(20)));
  const auto at = [&](int slice, int block) {
    return parent->slice(slice) + kChunkHeader + static_cast<int>(aligned(20)) * block;
  };
  const auto freeAll = [&](int slice, int but = -1) {
    for (int i = 0; i < 16; ++i) {
      if (i != but) fixed->free(at(slice, i));
    }
  };
  fixed->free(at(3, 7));
  fixed->free(at(1, 2));
  freeAll(5);
  freeAll(4, 9);
  fixed->free(at(3, 1));
  freeAll(0);
  EXPECT_TRUE(fixed->hibernate(true));
  EXPECT_EQ(parent->freed, (std::vector<int>{0, 5}));
  // The highest chunk's runs first, in each chunk the run that was freed last.
  for (int i = 15; i >= 0; --i) {
    if (i == 9) continue;
    EXPECT_EQ(fixed->alloc(20), at(4, i));
  }
  for (char* expected : {at(3, 1), at(3, 7), at(1, 2)}) EXPECT_EQ(fixed->alloc(20), expected);
  fixed.reset();
  std::sort(parent->freed.begin(), parent->freed.end());
  EXPECT_EQ(parent->freed, (std::vector<int>{0, 1, 3, 4, 5})) << "the chunks of what is handed out too";
}

TEST(FixedPoolDeathTest, DebugBuildsRefuseMoreThanABlock) {
  EXPECT_EXIT(make<BFixedMemoryPool>(20u)->alloc(21), ::testing::ExitedWithCode(3), "block size");
}

TEST(ReserveHibernateBuffer, EqualCapacityGrowsAgain) {
  const u32 much = 1u << 20;
  ASSERT_TRUE(BMemoryManager::reserveHibernateBuffer(much));
  const testing_support::HeapFaults heap;
  EXPECT_TRUE(BMemoryManager::reserveHibernateBuffer(much - 1));
  EXPECT_EQ(heap.requests(), 0);
  EXPECT_TRUE(BMemoryManager::reserveHibernateBuffer(much));  // deliberate
  EXPECT_EQ(heap.requests(), 1);
  EXPECT_NE(BMemoryManager::getHibernateBuffer(), nullptr);
}

TEST(RegisterPool, TheNewestFirstUnknownIsRefusedAndTheStaticNodeServesOnce) {
  const auto registered = make<SlicePool>(std::vector<int>{});
  BMemoryPool* const system = BMemoryManager::getSystemPool();
  std::vector<BMemoryPool*> seen;
  const auto note = [](BMemoryPool* one, void* to) {
    EXPECT_EQ(allocCSProc().heldCount(), 1u);
    static_cast<std::vector<BMemoryPool*>*>(to)->push_back(one);
  };
  BMemoryManager::visitPools(note, &seen);
  EXPECT_EQ(seen.front(), registered.get()) << "the newest first";
  EXPECT_EQ(seen.back(), system);
  EXPECT_TRUE(BMemoryManager::unregisterPool(registered.get()));
  EXPECT_FALSE(BMemoryManager::unregisterPool(registered.get()));
  const testing_support::HeapFaults heap;
  EXPECT_TRUE(BMemoryManager::unregisterPool(system));
  EXPECT_EQ(heap.liveBlocks(), 0);
  EXPECT_TRUE(BMemoryManager::registerPool(system));  // deliberate: not by the node that it had
  EXPECT_EQ(heap.liveBlocks(), 1);
}

TEST(RegisterPool, ManyGoInAnyOrderAndOneThatIsEnteredTwiceByItsNewestEntry) {
  std::vector<Ref<BFixedMemoryPool>> pools;
  std::vector<BMemoryPool*> expected;  // the oldest first
  for (u32 i = 0; i < 150; ++i) {
    pools.push_back(make<BFixedMemoryPool>(16u));
    expected.push_back(pools.back().get());
    if (i % 50 != 49) continue;
    BMemoryManager::registerPool(pools[i / 2].get());
    expected.push_back(pools[i / 2].get());
  }
  std::mt19937 random(3);
  while (!expected.empty()) {
    std::vector<BMemoryPool*> seen;
    const auto note = [](BMemoryPool* one, void* to) {
      static_cast<std::vector<BMemoryPool*>*>(to)->insert(static_cast<std::vector<BMemoryPool*>*>(to)->begin(), one);
    };
    BMemoryManager::visitPools(note, &seen);
    seen.erase(seen.begin(), seen.end() - static_cast<std::ptrdiff_t>(expected.size()));
    ASSERT_EQ(seen, expected);
    BMemoryPool* const gone = expected[random() % expected.size()];
    ASSERT_TRUE(BMemoryManager::unregisterPool(gone));
    expected.erase(std::find(expected.rbegin(), expected.rend(), gone).base() - 1);
  }
}

// What relies on it: nothing; callers whose numbers come from outside check them first.
TEST(SystemPool, TheProductOfAnArrayIsNotChecked) {
  BMemoryPool& system = *BMemoryManager::getSystemPool();
  void* const block = system.allocArray(0x10001, 0x10000);
  EXPECT_EQ(system.blockSize(block), 0x10000u);
  system.free(block);
}

// What relies on it: callers that allow null returns leave the lock themselves.
TEST(SystemPool, OnlyTheNullOfAllocLeavesTheLockHeld) {
  BMemoryPool& system = *BMemoryManager::getSystemPool();
  const auto classes = make<BSizeClassMemoryPool>();
  BMemoryManager::allowNULLreturn(true);
  EXPECT_EQ(system.alloc(0xFFFFFFFF), nullptr);
  EXPECT_EQ(allocCSProc().heldCount(), 1u);
  std::thread([] { EXPECT_FALSE(allocCSProc().tryEnter()); }).join();
  allocCSProc().leave();
  EXPECT_EQ(classes->alloc(0xFFFFFFFF), nullptr);                      // no wrap-around by the class word
  EXPECT_EQ(make<BFixedMemoryPool>(0x20000000u)->alloc(16), nullptr);  // nor by the sixteen blocks of a chunk
  EXPECT_EQ(allocCSProc().heldCount(), 2u);
  allocCSProc().leave();
  allocCSProc().leave();

  void* const block = system.alloc(10);
  EXPECT_EQ(system.realloc(block, 0xFFFFFFFF), nullptr);
  const testing_support::HeapFaults heap;
  EXPECT_EQ(system.realloc(block, 0), nullptr);  // freed, no failure
  EXPECT_EQ(heap.liveBlocks(), -1);
  void* const small = classes->alloc(10);
  EXPECT_EQ(classes->realloc(small, 0xFFFFFFFE), nullptr);
  EXPECT_EQ(allocCSProc().heldCount(), 0u);
  classes->free(small);
  EXPECT_TRUE(BMemoryManager::allowNULLreturn(false));
  EXPECT_FALSE(BMemoryManager::allowNULLreturn());
}

TEST(Heap, SizeNames) {
  void* const block = _smalloc(100);
  EXPECT_GE(smsize(block), 100u);
  EXPECT_EQ(_smsize(block), smsize(block));
  EXPECT_EQ(__smsize(block), smsize(block));
  EXPECT_EQ(smsize(nullptr), 0u);
  _sfree(__srealloc(block, 200, 0, "file", 1));
}

}  // namespace
}  // namespace corvix
