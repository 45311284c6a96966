// BMemoryManager: the pools and the hibernatable objects of the process, and what happens when memory runs
// out. Everything works under the one lock that `allocCSProc` returns. [any thread]
//
// While the library is being unloaded, once the lock is gone, nothing is touched any more: operations then
// answer false, null or nothing, also for objects that are still registered.
#pragma once

#include "core/baselib/memory/MemoryPool.h"

namespace corvix {

class BHibernatable;
class SCriticalSection;

// The lock of the memory manager and of every pool. Recursive.
CORVIX_API SCriticalSection& allocCSProc() noexcept;

class CORVIX_API BMemoryManager {
 public:
  BMemoryManager() = delete;

  // The plain heap. Adds no reference and is not to be released.
  static BMemoryPool* getSystemPool() noexcept;

  // A pool that serves what the flags of namespace pool ask for, with a reference for the caller: one that is
  // registered if any accepts, else a new one. `sizeBytes` is the block size of a fixed pool. A fixed request
  // may be served by a part of a size-class pool. Null when there is no memory for a new pool.
  static BMemoryPool* getPool(u32 flags, u32 sizeBytes);

  // For constructors and destructors of pools. The newest stands first. False when there is no memory for the
  // entry; unregistering: when there is no such entry.
  static bool registerPool(BMemoryPool* memoryPool) noexcept;
  static bool unregisterPool(BMemoryPool* memoryPool) noexcept;

  // Likewise of hibernatables. The first one makes the manager set its emergency reserve aside.
  static bool registerHibernatable(BHibernatable* object) noexcept;
  static bool unregisterHibernatable(BHibernatable* object) noexcept;

  // Called for every pool, every hibernatable, the newest first, under the lock.
  using PoolVisitor = void (*)(BMemoryPool* memoryPool, void* context);
  using HibernatableVisitor = void (*)(BHibernatable* object, void* context);
  static void visitPools(PoolVisitor visitor, void* context);
  static void visitHibernatables(HibernatableVisitor visitor, void* context);

  static int getHibernateFactor() noexcept;

  // Asks every hibernatable, the newest first, to give memory back; true if any did. The emergency reserve is
  // let go for that time. Within a `hibernate` it does nothing and answers false.
  static bool hibernateHibers(bool argument);

  // Likewise every pool; wholly free chunks go back to the heap.
  static bool hibernatePools(bool argument);

  // `hibernateHibers(true)`. The size is what was wanted; it makes no difference.
  static bool drainMemory(u32 sizeBytes);

  // For a quiet moment: does what a call of `scheduleHibernation` asked for, and sets the emergency reserve
  // aside if it is missing. Nothing in the library schedules.
  static void performScheduled();
  static void scheduleHibernation() noexcept;

  // The scratch memory that a compaction works in; null until some is reserved. Valid under the lock.
  static void* getHibernateBuffer() noexcept;

  // Makes sure of `sizeBytes` in it; false and the old buffer if that cannot be done.
  static bool reserveHibernateBuffer(u32 sizeBytes) noexcept;

  // Whether an allocation that cannot be satisfied returns null, instead of asking the user. The second sets it
  // and returns what it was.
  static bool allowNULLreturn() noexcept;
  static bool allowNULLreturn(bool allow) noexcept;

  // The last resort: false if null returns are allowed, true if the user wants another try. If he does not,
  // or there is nobody to ask, the process ends here with an access violation.
  static bool notEnoughMemory();
};

}  // namespace corvix
