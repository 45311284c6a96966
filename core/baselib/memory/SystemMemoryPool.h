// BSystemMemoryPool: blocks straight from the heap, with the watch over memory pressure. The manager has one
// that lives as long as the library; any other does the same.
#pragma once

#include "core/baselib/memory/MemoryPool.h"

namespace corvix {

namespace memory {
class ManagerLock;
}

class CORVIX_API BSystemMemoryPool final : public BMemoryPool {
  CORVIX_IDENTITY(BSystemMemoryPool, 0x22C7079D, 0x428759CB, 0xAD618AA4, 0xCC6CD14D, BMemoryPool)

 public:
  BSystemMemoryPool();
  ~BSystemMemoryPool() override;

  // When the heap refuses: hibernatables are drained, then the user is asked until the heap does not refuse.
  void* alloc(u32 sizeBytes) override;
  void free(void* block) override;

  // Size 0 frees the block and returns null.
  void* realloc(void* block, u32 sizeBytes) override;
  u32 blockSize(void* block) override;
  i32 poolKind() const noexcept override;
  bool accepts(u32 flags, u32 sizeBytes) const noexcept override;

 private:
  explicit BSystemMemoryPool(const memory::ManagerLock&);
};

}  // namespace corvix
