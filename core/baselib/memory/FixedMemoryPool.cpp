#include "core/baselib/memory/FixedMemoryPool.h"

#include "core/baselib/memory/FixedMemoryPool_p.h"
#include "core/baselib/memory/ManagerState_p.h"

namespace corvix {

namespace {

using memory::ManagerLock;

constexpr u32 kBlocksPerChunk = 16;
constexpr u32 kSmallestBlock = 4;

}  // namespace

// One chunk of a compaction.
struct BFixedMemoryPool::ChunkRecord {
  Chunk* chunk;
  FreeRun* runs;  // the one found last comes first
  u32 usedBytes;
  u32 payloadBytes;
};

// The lock is held until the object is whole: another thread may find it in the list of pools.
BFixedMemoryPool::BFixedMemoryPool(u32 blockBytes, BMemoryPool* parent)
    : BFixedMemoryPool(blockBytes, parent, ManagerLock()) {}

BFixedMemoryPool::BFixedMemoryPool(u32 blockBytes, BMemoryPool* parent, const ManagerLock&)
    : hibernateFactor_(BMemoryManager::getHibernateFactor()),
      blockBytes_(std::max(blockBytes, kSmallestBlock)),
      parent_(parent ? parent : BMemoryManager::getSystemPool()) {
  // Blocks of 4 to 7 bytes lie two words apart: that is what a free run needs for its entry. A chunk that does
  // not fit 32 bits gets the largest number as its size, which no heap has.
  chunkBytes_ =
      static_cast<u32>(std::min<u64>(strideOf<u64>(blockBytes_) * kBlocksPerChunk + sizeof(Chunk), 0xFFFFFFFF));
}

BFixedMemoryPool::~BFixedMemoryPool() {
  const ManagerLock lock;
  if (!lock) return;  // the parent may be gone too
  while (Chunk* const chunk = chunks_) {
    chunks_ = chunk->next;
    parent_->free(chunk);
  }
  BMemoryManager::unregisterPool(this);
}

bool BFixedMemoryPool::grow() {
  static_assert(sizeof(void*) != 4 || (sizeof(Chunk) == 12 && sizeof(FreeRun) == 8 && sizeof(ChunkRecord) == 16));
  // So that a compaction needs no memory. Without it there is none until there is room again.
  BMemoryManager::reserveHibernateBuffer((chunkCount_ + 1) * static_cast<u32>(sizeof(ChunkRecord)));
  auto* const chunk = static_cast<Chunk*>(parent_->alloc(chunkBytes_));
  if (!chunk) return false;
  const u32 payload = chunkBytes_ - static_cast<u32>(sizeof(Chunk));
  *chunk = {chunks_, payload, 0};
  chunks_ = chunk;
  payloadBytes_ += payload;
  ++chunkCount_;
  freeRuns_ = reinterpret_cast<FreeRun*>(chunk + 1);
  *freeRuns_ = {nullptr, payload};
  *reinterpret_cast<u32*>(freeRuns_ + 1) = 0;  // the run of a new chunk has a third word, nothing reads it
  return true;
}

void* BFixedMemoryPool::alloc(u32 sizeBytes) {
  const ManagerLock lock;
  return lock ? take(sizeBytes) : nullptr;
}

void BFixedMemoryPool::free(void* block) {
  const ManagerLock lock;
  if (lock && block) put(block);
}

void* BFixedMemoryPool::realloc(void* block, u32) { return block; }

u32 BFixedMemoryPool::blockSize(void*) { return blockBytes_; }

i32 BFixedMemoryPool::poolKind() const noexcept { return pool::kFixed; }

bool BFixedMemoryPool::accepts(u32 flags, u32 sizeBytes) const noexcept {
  return (flags & pool::kFixedSize) && !(flags & (pool::kNotFixed | pool::kPlainHeap)) && sizeBytes == blockBytes_;
}

bool BFixedMemoryPool::hibernate(bool) {
  const ManagerLock lock;
  if (!lock || !chunkCount_) return false;
  const u32 recordBytes = chunkCount_ * static_cast<u32>(sizeof(ChunkRecord));
  // Reserved when the chunks came, unless there was no memory for it then.
  if (lock->hibernateBufferBytes < recordBytes && !BMemoryManager::reserveHibernateBuffer(recordBytes)) return false;
  auto* const records = static_cast<ChunkRecord*>(lock->hibernateBuffer);
  ChunkRecord* record = records;
  for (Chunk* chunk = chunks_; chunk; chunk = chunk->next) {
    *record++ = {chunk, nullptr, chunk->payloadBytes, chunk->payloadBytes};
  }
  sortFreeRuns(records);
  // The records are read to the end before a chunk goes: the parent may use the buffer itself.
  Chunk* unused = rebuild(records);
  const bool released = unused != nullptr;
  while (Chunk* const chunk = unused) {
    unused = chunk->next;
    parent_->free(chunk);
  }
  return released;
}

// Puts the records into the order of their chunks' addresses and every free run into its chunk's record.
void BFixedMemoryPool::sortFreeRuns(ChunkRecord* records) noexcept {
  ChunkRecord* const end = records + chunkCount_;
  const auto isBelow = [](const ChunkRecord& a, const ChunkRecord& b) { return a.chunk < b.chunk; };
  if (std::is_sorted(records, end, [&](auto& a, auto& b) { return isBelow(b, a); })) {
    std::reverse(records, end);  // as the last compaction left it, and newer chunks mostly lie higher
  } else {
    std::sort(records, end, isBelow);
  }
  const auto liesBelow = [](const void* address, const ChunkRecord& other) { return address < other.chunk; };
  ChunkRecord* home = records;
  for (FreeRun* run = freeRuns_; run;) {
    FreeRun* const next = run->next;
    // Neighbours in the list mostly lie in the same chunk.
    if (liesBelow(run, *home) || (home + 1 != end && !liesBelow(run, home[1])))
      home = std::upper_bound(records, end, static_cast<const void*>(run), liesBelow) - 1;
    run->next = home->runs;
    home->runs = run;
    home->usedBytes -= run->lengthBytes;
    run = next;
  }
}

// Makes both lists anew; returns the chunks of which nothing is handed out, the lowest first.
BFixedMemoryPool::Chunk* BFixedMemoryPool::rebuild(const ChunkRecord* records) noexcept {
  Chunk* unused = nullptr;
  Chunk** lastUnused = &unused;
  const ChunkRecord* const end = records + chunkCount_;
  chunks_ = nullptr;
  freeRuns_ = nullptr;
  for (const ChunkRecord* record = records; record != end; ++record) {
    Chunk* const chunk = record->chunk;
    if (record->usedBytes < blockBytes_) {
      *lastUnused = chunk;
      lastUnused = &chunk->next;
      payloadBytes_ -= record->payloadBytes;
      --chunkCount_;
      continue;
    }
    chunk->usedBytes = record->usedBytes;
    chunk->next = chunks_;
    chunks_ = chunk;
    for (FreeRun* run = record->runs; run;) {  // back into the order in which they were found
      FreeRun* const next = run->next;
      run->next = freeRuns_;
      freeRuns_ = run;
      run = next;
    }
  }
  *lastUnused = nullptr;
  return unused;
}

}  // namespace corvix
