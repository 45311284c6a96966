// BMemoryPool: an allocator that is shared by reference count and known to the memory manager for its whole
// life. Pools are obtained from BMemoryManager::getPool; derive from this class for a pool of your own.
//
// Every operation works under the lock of `allocCSProc`, which is recursive: a pool may call the manager and
// its parent while it holds it. Counting references is not atomic. [any thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

namespace pool {

// What `poolKind` answers.
constexpr i32 kFixed = 0;
constexpr i32 kSystem = 1;
constexpr i32 kSizeClass = 2;

// What a request to `getPool` may say.
constexpr u32 kNotFixed = 0x01;
constexpr u32 kPlainHeap = 0x02;  // neither a fixed nor a size-class pool
constexpr u32 kFixedSize = 0x04;
constexpr u32 kNeverShared = 0x20;
constexpr u32 kSizeClasses = 0x40;

}  // namespace pool

class CORVIX_API BMemoryPool : public BSmartObject {
  CORVIX_IDENTITY(BMemoryPool, 0xD9A5F15A, 0x4CE12D52, 0x9313EAC4, 0x8F8E0440, BSmartObject)

 public:
  // Registers with the manager. Another thread may ask a registered pool at once whether it suits: a derived
  // class's constructor and destructor hold the lock of `allocCSProc` from here to their end.
  BMemoryPool();
  ~BMemoryPool() override;

  // Gives unused memory back; true if there was any.
  virtual bool hibernate(bool argument);

  // `alloc(count * sizeBytes)`. The product is not checked: a caller whose numbers come from outside checks
  // that it fits 32 bits, or gets a block that is too small.
  virtual void* allocArray(u32 count, u32 sizeBytes);

  // Null only while BMemoryManager::allowNULLreturn is set, and then with the lock of `allocCSProc` held once
  // more by the calling thread, which has to leave it.
  virtual void* alloc(u32 sizeBytes) = 0;

  // Null is ignored.
  virtual void free(void* block) = 0;

  // The block with at least `sizeBytes`, moved if need be. Null leaves the block as it was and no lock held.
  virtual void* realloc(void* block, u32 sizeBytes) = 0;

  // The bytes of the block that `block` lies in, what the pool itself keeps in it included.
  virtual u32 blockSize(void* block) = 0;

  // One of pool::k..., what the pool is.
  virtual i32 poolKind() const noexcept = 0;

  // Whether the pool can serve a request of these flags and this size.
  virtual bool accepts(u32 flags, u32 sizeBytes) const noexcept = 0;
};

}  // namespace corvix
