#include "graphics/fonts/GlyphCache_p.h"

#include <atomic>

namespace corvix {

namespace {

constexpr std::size_t kEntryBytes = 96;  // what an entry costs besides its rows

std::size_t bytesOf(const GlyphCoverage& coverage) noexcept {
  return kEntryBytes + static_cast<std::size_t>(coverage.width) * static_cast<std::size_t>(coverage.height);
}

}  // namespace

GlyphCache::Entry GlyphCache::find(const Key& key) {
  Entry entry;
  find(&key, 1, &entry);
  return entry;
}

void GlyphCache::find(const Key* keys, std::size_t count, Entry* entries) {
  const SCriticalSection::Lock lock(lock_);
  for (std::size_t i = 0; i < count; ++i) {
    const auto found = entries_.find(keys[i]);
    if (found != entries_.end()) entries[i] = found->second;
  }
}

GlyphCache::Entry GlyphCache::add(const Key& key, GlyphCoverage coverage) {
  const std::size_t bytes = bytesOf(coverage);
  Entry made = std::make_shared<const GlyphCoverage>(std::move(coverage));
  decltype(entries_) former;  // let go outside the lock
  const SCriticalSection::Lock lock(lock_);
  if (sizeBytes_ + bytes > kMostBytes) {
    former.swap(entries_);
    sizeBytes_ = 0;
  }
  if (entries_.emplace(key, made).second) sizeBytes_ += bytes;
  return made;
}

// Who holds the lock may be waiting for the memory manager's, which the caller has.
bool GlyphCache::hibernate(bool) {
  if (!lock_.tryEnter()) return false;
  const bool hadAny = !entries_.empty();
  entries_.clear();
  sizeBytes_ = 0;
  lock_.leave();
  return hadAny;
}

GlyphCache& glyphCache() {
  static GlyphCache* const cache = new GlyphCache;
  return *cache;
}

u32 nextFontNumber() noexcept {
  static std::atomic<u32> number{0};
  return ++number;
}

}  // namespace corvix
