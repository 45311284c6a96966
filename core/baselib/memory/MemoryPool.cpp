#include "core/baselib/memory/MemoryPool.h"

#include "core/baselib/memory/MemoryManager.h"

namespace corvix {

BMemoryPool::BMemoryPool() { BMemoryManager::registerPool(this); }

BMemoryPool::~BMemoryPool() { BMemoryManager::unregisterPool(this); }

bool BMemoryPool::hibernate(bool) { return false; }

void* BMemoryPool::allocArray(u32 count, u32 sizeBytes) { return alloc(count * sizeBytes); }

}  // namespace corvix
