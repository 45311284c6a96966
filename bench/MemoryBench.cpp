// Pools against the heaps and pools that one would use instead. An operation is a batch of 256 blocks, each taken
// and written to, and then all given back: newest first, oldest first or in no order.
#include "bench/Bench.h"
#include "bench/Held.h"
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/objects/Ref.h"

#include <boost/pool/pool.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory_resource>
#include <numeric>
#include <random>
#include <thread>

#include <windows.h>

namespace corvix::bench {
namespace {

constexpr std::size_t kBatch = 256;

enum class Order { NewestFirst, OldestFirst, Random };

const char* nameOf(Order order) {
  switch (order) {
    case Order::NewestFirst:
      return "newest first";
    case Order::OldestFirst:
      return "oldest first";
    case Order::Random:
      return "random";
  }
  return "";
}

std::vector<std::size_t> permutation(Order order, std::size_t count) {
  std::vector<std::size_t> places(count);
  std::iota(places.begin(), places.end(), 0);
  if (order == Order::NewestFirst) std::reverse(places.begin(), places.end());
  if (order == Order::Random) std::shuffle(places.begin(), places.end(), std::mt19937(11));
  return places;
}

struct Fixed {
  explicit Fixed(u32 size) : pool(make<BFixedMemoryPool>(size)), bytes(size) {}
  void* take() { return pool->alloc(bytes); }
  void give(void* block) { pool->free(block); }
  Ref<BMemoryPool> pool;  // as callers have it
  u32 bytes;
};

struct SizeClasses {
  explicit SizeClasses(u32 size) : pool(make<BSizeClassMemoryPool>()), bytes(size) {}
  void* take() { return pool->alloc(bytes); }
  void give(void* block) { pool->free(block); }
  Ref<BMemoryPool> pool;
  u32 bytes;
};

struct Malloc {
  explicit Malloc(u32 size) : bytes(size) {}
  void* take() { return std::malloc(bytes); }
  void give(void* block) { std::free(block); }
  u32 bytes;
};

struct SystemHeap {
  explicit SystemHeap(u32 size) : heap(GetProcessHeap()), bytes(size) {}
  void* take() { return HeapAlloc(heap, 0, bytes); }
  void give(void* block) { HeapFree(heap, 0, block); }
  HANDLE heap;
  u32 bytes;
};

// The system's own lock, called as directly as the library calls it.
struct LockedBoostPool {
  explicit LockedBoostPool(u32 size) : pool(size) { InitializeCriticalSectionAndSpinCount(&section, 4000); }
  ~LockedBoostPool() { DeleteCriticalSection(&section); }
  LockedBoostPool(const LockedBoostPool&) = delete;
  LockedBoostPool& operator=(const LockedBoostPool&) = delete;
  void* take() {
    EnterCriticalSection(&section);
    void* const block = pool.malloc();
    LeaveCriticalSection(&section);
    return block;
  }
  void give(void* block) {
    EnterCriticalSection(&section);
    pool.free(block);
    LeaveCriticalSection(&section);
  }
  CRITICAL_SECTION section;
  boost::pool<> pool;
};

struct PmrPool {
  explicit PmrPool(u32 size) : bytes(size) {}
  void* take() { return pool.allocate(bytes); }
  void give(void* block) { pool.deallocate(block, bytes); }
  std::pmr::synchronized_pool_resource pool;
  u32 bytes;
};

template <class Source>
void churn(Source& source, const std::vector<std::size_t>& places, std::uint64_t batches) {
  void* blocks[kBatch];
  for (; batches > 0; --batches) {
    for (void*& block : blocks) {
      block = source.take();
      *static_cast<volatile u32*>(block) = 1;
    }
    for (std::size_t place : places) source.give(blocks[place]);
  }
}

template <class Source>
Work churning(Source& source, Order order) {
  return [&source, places = permutation(order, kBatch)](std::uint64_t count) { churn(source, places, count); };
}

// Two threads, which stay for a row: neither starting one nor waking it counts, nor does the one wait for the other at
// the end longer than for a batch.
class TwoThreads {
 public:
  TwoThreads() : other_([this] { serve(); }) {}
  ~TwoThreads() {
    share_ = nullptr;
    begin();
    other_.join();
  }
  TwoThreads(const TwoThreads&) = delete;
  TwoThreads& operator=(const TwoThreads&) = delete;

  // Either thread takes the next of `count` batches as soon as it is done with one.
  void run(std::uint64_t count, const std::function<void()>& batch) {
    std::atomic<std::int64_t> left{static_cast<std::int64_t>(count)};
    const std::function<void()> share = [&] {
      while (left.fetch_sub(1) > 0) batch();
    };
    share_ = &share;
    begin();
    share();
    while (ended_ != begun_) YieldProcessor();
  }

 private:
  void begin() { ++begun_; }
  void serve() {
    for (std::uint32_t seen = 1;; ++seen) {
      while (begun_ != seen) YieldProcessor();
      if (!share_) return;
      (*share_)();
      ended_ = seen;
    }
  }

  const std::function<void()>* share_ = nullptr;
  std::atomic<std::uint32_t> begun_{0};
  std::atomic<std::uint32_t> ended_{0};
  std::thread other_;
};

// An operation is so many batches.
constexpr std::uint64_t kBatchesOfTwo = 16;

template <class Source>
Work churningByTwo(TwoThreads& threads, Source& source, Order order) {
  return [&threads, &source, places = permutation(order, kBatch)](std::uint64_t count) {
    threads.run(count * kBatchesOfTwo, [&] { churn(source, places, 1); });
  };
}

struct Peers {
  explicit Peers(u32 size) : heap(size), system(size), boost(size), pmr(size) {}
  Malloc heap;
  SystemHeap system;
  LockedBoostPool boost;
  PmrPool pmr;
};

// As often as a pool takes the memory manager's lock, one is taken and a block touched.
struct LockPairs {
  LockPairs() { InitializeCriticalSectionAndSpinCount(&section, 4000); }
  ~LockPairs() { DeleteCriticalSection(&section); }
  LockPairs(const LockPairs&) = delete;
  LockPairs& operator=(const LockPairs&) = delete;
  void* take() {
    EnterCriticalSection(&section);
    void* const block = &words[++taken % kBatch];
    LeaveCriticalSection(&section);
    return block;
  }
  void give(void*) {
    EnterCriticalSection(&section);
    --taken;
    LeaveCriticalSection(&section);
  }
  CRITICAL_SECTION section;
  std::size_t taken = 0;
  u32 words[kBatch] = {};
};

// What the locks alone cost of what malloc does, the medians of some rounds.
double lockShareOfMalloc(LockPairs& pairs, Malloc& heap, Order order) {
  const std::vector<std::size_t> places = permutation(order, kBatch);
  const auto medianNs = [&places](auto& source) {
    std::vector<double> rounds(51);
    for (double& round : rounds) {
      const auto start = std::chrono::steady_clock::now();
      churn(source, places, 20);
      round = std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
    }
    std::nth_element(rounds.begin(), rounds.begin() + 25, rounds.end());
    return rounds[25];
  };
  return medianNs(pairs) / medianNs(heap);
}

// Far less than malloc, or hardly more than the locks that every pool takes.
template <class Ours>
void compareAll(Report& report, const char* what, u32 size, Order order) {
  Ours ours(size);
  Peers peers(size);
  const std::string name = std::string(what) + ", " + std::to_string(size) + " bytes, " + nameOf(order);
  const Work mine = churning(ours, order);
  LockPairs pairs;
  const bool isWithinReach = lockShareOfMalloc(pairs, peers.heap, order) < 0.33;
  report.compare(name, "malloc", isWithinReach ? 0.4 : 0, mine, churning(peers.heap, order));
  report.compare(name, "as many lock pairs", 1.2, mine, churning(pairs, order));
  report.compare(name, "HeapAlloc", 0, mine, churning(peers.system, order));
  report.compare(name, "std::pmr::synchronized_pool_resource", 0.4, mine, churning(peers.pmr, order));
  report.compare(name, "boost::pool behind the same lock", 1.2, mine, churning(peers.boost, order));
  TwoThreads threads;
  const Work mineByTwo = churningByTwo(threads, ours, order);
  report.compare(name + ", two threads", "malloc", 0.6, mineByTwo, churningByTwo(threads, peers.heap, order));
  report.compare(name + ", two threads", "as many contended lock pairs", 1.2, mineByTwo,
                 churningByTwo(threads, pairs, order));
}

template <class Source>
double heldPerLiveByte(u32 size) {
  constexpr std::size_t kLiveBytes = 4u << 20;
  Source source(size);
  std::vector<void*> blocks(kLiveBytes / size);
  const double before = heldByHeap();
  for (void*& block : blocks) block = source.take();
  const double held = (heldByHeap() - before) / kLiveBytes;
  for (void* block : blocks) source.give(block);
  return held;
}

// Memory runs short when a program has been busy with other things.
void emptyCaches() {
  static std::vector<char> other(64u << 20);
  for (std::size_t i = 0; i < other.size(); i += 64) ++other[i];
}

// One compaction of a pool of so many chunks, with cold caches; of every second chunk a block stays in use.
double compactionNs(std::size_t chunks, Order order) {
  using Clock = std::chrono::steady_clock;
  constexpr u32 kBytes = 20;
  std::vector<double> times;
  for (int round = 0; round < 5; ++round) {
    const auto pool = make<BFixedMemoryPool>(kBytes);
    std::vector<void*> blocks(chunks * 16);
    for (void*& block : blocks) block = pool->alloc(kBytes);
    for (std::size_t place : permutation(order, blocks.size())) {
      if (place % 32 != 0) pool->free(blocks[place]);
    }
    emptyCaches();
    const auto start = Clock::now();
    pool->hibernate(true);
    times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count());
  }
  std::nth_element(times.begin(), times.begin() + 2, times.end());
  return times[2];
}

void compareCompactions(Report& report, Order order) {
  std::vector<double> many, few;
  for (int round = 0; round < 9; ++round) {
    many.push_back(compactionNs(10000, order));
    few.push_back(compactionNs(1000, order));
  }
  report.add(std::string("compaction of 10000 chunks, freed ") + nameOf(order), "of 1000", 12, many, few);
}

void measureMemory(Report& report) {
  for (u32 size : {8u, 32u, 128u, 1024u}) {
    for (Order order : {Order::NewestFirst, Order::OldestFirst, Order::Random})
      compareAll<Fixed>(report, "fixed pool", size, order);
  }
  for (u32 size : {8u, 100u, 1000u}) compareAll<SizeClasses>(report, "size classes", size, Order::Random);
  for (u32 size : {8u, 32u, 128u, 1024u}) {
    report.add("fixed pool, held per live byte, " + std::to_string(size), "malloc", 0, heldPerLiveByte<Fixed>(size),
               heldPerLiveByte<Malloc>(size), "bytes");
    report.add("size classes, held per live byte, " + std::to_string(size), "malloc", 0,
               heldPerLiveByte<SizeClasses>(size), heldPerLiveByte<Malloc>(size), "bytes");
  }
  for (Order order : {Order::NewestFirst, Order::Random}) compareCompactions(report, order);
}

const Area area{"memory", measureMemory};

}  // namespace
}  // namespace corvix::bench
