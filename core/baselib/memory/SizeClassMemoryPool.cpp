#include "core/baselib/memory/SizeClassMemoryPool.h"

#include "core/baselib/memory/FixedMemoryPool_p.h"
#include "core/baselib/memory/ManagerState_p.h"

#include <bit>
#include <cstring>

namespace corvix {

namespace {

using memory::ManagerLock;

// The class is the 32-bit number just before the block. In 64 bits as many unused bytes before it keep the block
// aligned.
constexpr u32 kClassWordBytes = sizeof(void*);
constexpr u32 kSmallestExponent = 3;
constexpr u32 kLargestInClass = 1024;
constexpr u32 kParentClass = 11;

u32 classOf(u32 sizeBytes) noexcept {
  return sizeBytes <= 8 ? 0 : static_cast<u32>(std::bit_width(sizeBytes - 1)) - kSmallestExponent;
}

u32 capacityOf(u32 sizeClass) noexcept { return 1u << (sizeClass + kSmallestExponent); }

// The size of a request with its class word. One that does not fit 32 bits becomes the largest number, which no heap
// has.
u32 withClassWord(u32 sizeBytes) noexcept {
  return sizeBytes > 0xFFFFFFFF - kClassWordBytes ? 0xFFFFFFFF : sizeBytes + kClassWordBytes;
}

void* rawBlock(void* block) noexcept { return static_cast<char*>(block) - kClassWordBytes; }

u32& classWord(void* block) noexcept { return static_cast<u32*>(block)[-1]; }

void* userBlock(void* raw, u32 sizeClass) noexcept {
  if (!raw) return nullptr;
  void* const block = static_cast<char*>(raw) + kClassWordBytes;
  classWord(block) = sizeClass;
  return block;
}

}  // namespace

BSizeClassMemoryPool::BSizeClassMemoryPool(BMemoryPool* parent) : BSizeClassMemoryPool(parent, ManagerLock()) {}

BSizeClassMemoryPool::BSizeClassMemoryPool(BMemoryPool* parent, const ManagerLock&)
    : parent_(parent ? parent : BMemoryManager::getSystemPool()), subPools_{} {
  for (u32 i = 0; i < kClassCount; ++i) subPool(i);
}

BSizeClassMemoryPool::~BSizeClassMemoryPool() {
  const ManagerLock lock;
  for (BFixedMemoryPool* one : subPools_) {
    if (one) one->release();
  }
  BMemoryManager::unregisterPool(this);
}

// Deliberate: registered like every pool, so a request for a fixed pool of one of these sizes may get it.
BFixedMemoryPool* BSizeClassMemoryPool::subPool(u32 sizeClass) {
  BFixedMemoryPool*& one = subPools_[sizeClass];
  if (one) [[likely]]
    return one;
  if (void* const place = _smalloc(sizeof(BFixedMemoryPool)))
    one = new (place) BFixedMemoryPool(capacityOf(sizeClass) + kClassWordBytes, parent_);
  return one;
}

bool BSizeClassMemoryPool::hibernate(bool argument) {
  const ManagerLock lock;
  if (!lock) return false;
  bool released = false;
  for (BFixedMemoryPool* one : subPools_) {
    if (one) released |= one->hibernate(argument);
  }
  return released;
}

void* BSizeClassMemoryPool::alloc(u32 sizeBytes) {
  const ManagerLock lock;
  if (!lock) return nullptr;
  if (sizeBytes <= kLargestInClass) {
    const u32 sizeClass = classOf(sizeBytes);
    if (BFixedMemoryPool* const from = subPool(sizeClass))
      return userBlock(from->take(capacityOf(sizeClass) + kClassWordBytes), sizeClass);
  }
  return userBlock(parent_->alloc(withClassWord(sizeBytes)), kParentClass);
}

// `alloc`, but its null leaves the lock as it was.
void* BSizeClassMemoryPool::allocLeavingLock(u32 sizeBytes) {
  const ManagerLock lock;
  if (!lock) return nullptr;
  const u32 held = lock->section.heldCount();
  void* const block = alloc(sizeBytes);
  while (!block && lock->section.heldCount() > held) lock->section.leave();
  return block;
}

void BSizeClassMemoryPool::free(void* block) {
  const ManagerLock lock;
  if (!lock || !block) return;
  const u32 sizeClass = classWord(block);
  if (sizeClass < kClassCount) {
    subPools_[sizeClass]->put(rawBlock(block));
  } else {
    parent_->free(rawBlock(block));
  }
}

void* BSizeClassMemoryPool::realloc(void* block, u32 sizeBytes) {
  if (block && classWord(block) >= kClassCount)
    return userBlock(parent_->realloc(rawBlock(block), withClassWord(sizeBytes)), kParentClass);
  const u32 capacity = block ? capacityOf(classWord(block)) : 0;
  if (block && sizeBytes <= capacity) return block;
  void* const larger = allocLeavingLock(sizeBytes);
  if (!larger || !block) return larger;
  std::memcpy(larger, block, capacity);
  free(block);
  return larger;
}

// Deliberate: the raw block. Callers that want to fill a block subtract the class word.
u32 BSizeClassMemoryPool::blockSize(void* block) {
  if (!block) return 0;
  const u32 sizeClass = classWord(block);
  BMemoryPool* const owner = sizeClass < kClassCount ? subPools_[sizeClass] : parent_;
  return owner->blockSize(rawBlock(block));
}

i32 BSizeClassMemoryPool::poolKind() const noexcept { return pool::kSizeClass; }

bool BSizeClassMemoryPool::accepts(u32 flags, u32) const noexcept {
  return !(flags & (pool::kPlainHeap | pool::kFixedSize)) && (flags & pool::kSizeClasses);
}

}  // namespace corvix
