// BFixedMemoryPool: blocks of one size, carved from chunks of sixteen that come from a parent pool. In 32
// bits blocks lie as far apart as they are long, at least 8 bytes, and are aligned no further; in 64 bits they are
// aligned to 8. A run of free memory is described inside itself: in every pool a block takes at
// least 8 bytes of its chunk (16 in 64 bits), whatever was asked for, and splitting a run never leaves less.
#pragma once

#include "core/baselib/memory/MemoryPool.h"

namespace corvix {

namespace memory {
class ManagerLock;
}

class CORVIX_API BFixedMemoryPool final : public BMemoryPool {
  CORVIX_IDENTITY(BFixedMemoryPool, 0x21EBDDAE, 0x48C7424B, 0x918D428F, 0x04E6B533, BMemoryPool)

 public:
  // At least 4 bytes a block. The parent outlives the pool; null is the system pool. For a size whose chunk does
  // not fit 32 bits every `alloc` runs out of memory.
  explicit BFixedMemoryPool(u32 blockBytes, BMemoryPool* parent = nullptr);

  // Returns every chunk to the parent, blocks that are still handed out included.
  ~BFixedMemoryPool() override;

  // Gives the chunks back of which nothing is handed out. Costs no memory.
  bool hibernate(bool argument) override;

  // Ask for the pool's block size. Less takes less of a run but comes back as a whole block, so it must never be
  // freed next to others; more is the caller's error, which debug builds check.
  void* alloc(u32 sizeBytes) override;
  void free(void* block) override;

  // The block itself, whatever the size: it never moves or grows.
  void* realloc(void* block, u32 sizeBytes) override;

  // The size that was asked for when the pool was made, whatever the block.
  u32 blockSize(void* block) override;
  i32 poolKind() const noexcept override;
  bool accepts(u32 flags, u32 sizeBytes) const noexcept override;

  // Stored for whoever asks; the pool does not go by it.
  i32 hibernateFactor() const noexcept { return hibernateFactor_; }

  u32 blockBytes() const noexcept { return blockBytes_; }
  u32 chunkBytes() const noexcept { return chunkBytes_; }
  u32 chunkCount() const noexcept { return chunkCount_; }

  // Of all chunks, without their headers.
  u32 payloadBytes() const noexcept { return payloadBytes_; }

  // Every `alloc` adds what was asked for, every `free` subtracts a whole block: after requests below the block
  // size it runs below zero, modulo 2 to the 32.
  u32 handedOutBytes() const noexcept { return handedOutBytes_; }

 private:
  friend class BSizeClassMemoryPool;

  struct Chunk;
  struct FreeRun;
  struct ChunkRecord;

  BFixedMemoryPool(u32 blockBytes, BMemoryPool* parent, const memory::ManagerLock&);

  // Bytes from a block of this size to the next.
  template <class Size>
  static constexpr Size strideOf(Size sizeBytes) noexcept;

  // Under the lock.
  inline void* take(u32 sizeBytes);
  inline void put(void* block) noexcept;
  bool grow();
  void sortFreeRuns(ChunkRecord* records) noexcept;
  Chunk* rebuild(const ChunkRecord* records) noexcept;

  u32 payloadBytes_ = 0;
  u32 handedOutBytes_ = 0;
  u32 chunkCount_ = 0;
  i32 hibernateFactor_;
  u32 blockBytes_;
  u32 chunkBytes_;
  BMemoryPool* parent_;
  FreeRun* freeRuns_ = nullptr;
  Chunk* chunks_ = nullptr;
};

}  // namespace corvix
