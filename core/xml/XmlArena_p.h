// XmlArena: the memory of one tree that was read from a block. Nodes and their texts lie side by side and go
// together: the arena ends with the last of its nodes.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"

namespace corvix {

class XmlArena : public HeapAllocated {
 public:
  XmlArena() noexcept = default;
  XmlArena(const XmlArena&) = delete;
  XmlArena& operator=(const XmlArena&) = delete;
  ~XmlArena() {
    while (Chunk* chunk = chunks_) {
      chunks_ = chunk->next;
      _sfree(chunk);
    }
  }

  // Aligned for pointers. Throws std::bad_alloc.
  void* allocate(std::size_t sizeBytes) {
    sizeBytes = (sizeBytes + sizeof(void*) - 1) & ~(sizeof(void*) - 1);
    if (sizeBytes > left_) addChunk(sizeBytes);
    void* const block = at_;
    at_ += sizeBytes;
    left_ -= sizeBytes;
    return block;
  }

  void nodeMade() noexcept { ++nodes_; }

  // The arena is gone when its last node is.
  void nodeGone() noexcept {
    if (--nodes_ == 0) delete this;
  }

 private:
  struct Chunk {
    Chunk* next;
  };

  void addChunk(std::size_t atLeast) {
    const std::size_t size = atLeast > nextSize_ ? atLeast : nextSize_;
    auto* const chunk = static_cast<Chunk*>(heapAllocate(sizeof(Chunk) + size));
    chunk->next = chunks_;
    chunks_ = chunk;
    at_ = reinterpret_cast<unsigned char*>(chunk + 1);
    left_ = size;
    if (nextSize_ < kLargestChunk) nextSize_ *= 2;
  }

  static constexpr std::size_t kLargestChunk = 256 * 1024;

  Chunk* chunks_ = nullptr;
  unsigned char* at_ = nullptr;
  std::size_t left_ = 0;
  std::size_t nextSize_ = 2048;
  u32 nodes_ = 0;
};

}  // namespace corvix
