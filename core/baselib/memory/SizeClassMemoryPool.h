// BSizeClassMemoryPool: blocks of any size. Up to 1024 bytes they come from eight fixed pools of the powers of
// two from 8 on, larger ones from the parent. Each block has a word of the pool's own in front.
#pragma once

#include "core/baselib/memory/FixedMemoryPool.h"

namespace corvix {

class CORVIX_API BSizeClassMemoryPool final : public BMemoryPool {
  CORVIX_IDENTITY(BSizeClassMemoryPool, 0xA79AD946, 0x495A2317, 0x85209FD5, 0x63181C29, BMemoryPool)

 public:
  // The parent outlives the pool; null is the system pool.
  explicit BSizeClassMemoryPool(BMemoryPool* parent = nullptr);

  // Releases its fixed pools: their blocks go with them, unless somebody else holds the pool.
  ~BSizeClassMemoryPool() override;

  bool hibernate(bool argument) override;
  void* alloc(u32 sizeBytes) override;
  void free(void* block) override;

  // Null is like `alloc`, but for the lock. A block never shrinks.
  void* realloc(void* block, u32 sizeBytes) override;

  // The raw block with the pool's word, not the usable size: 12 for a request of 8. 0 for null.
  u32 blockSize(void* block) override;
  i32 poolKind() const noexcept override;
  bool accepts(u32 flags, u32 sizeBytes) const noexcept override;

 private:
  static constexpr u32 kClassCount = 8;

  BSizeClassMemoryPool(BMemoryPool* parent, const memory::ManagerLock&);

  BFixedMemoryPool* subPool(u32 sizeClass);
  void* allocLeavingLock(u32 sizeBytes);

  BMemoryPool* parent_;
  BFixedMemoryPool* subPools_[kClassCount];  // null where there was no memory for one
};

}  // namespace corvix
