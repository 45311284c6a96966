// AddressIndex: entries looked up by an address or a number that each holds, in chained buckets that grow with them. Of
// those that hold the same the one that came last is found first. An entry has a pointer for the index, `sameBucket` or
// another `link`, and stays its owner's. Not locked, nothing fails: without memory for more buckets there are fewer
// than there should be.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"

#include <algorithm>
#include <utility>

namespace corvix {

template <class Entry, auto key, auto link = &Entry::sameBucket>
class AddressIndex {
 public:
  template <class Key>
  Entry* find(Key wanted) const noexcept {
    Entry* entry = firstIn(wanted);
    while (entry && entry->*key != wanted) entry = entry->*link;
    return entry;
  }

  // The bucket in which the entries that hold it are, among others.
  template <class Key>
  Entry* firstIn(Key wanted) const noexcept {
    return *const_cast<AddressIndex*>(this)->bucketOf(wanted);
  }

  void enter(Entry* entry) noexcept {
    if (++count_ > (buckets_ ? bucketCount_ : kFewEntries)) arrange(buckets_ ? bucketCount_ * 2 : kFirstBuckets);
    push(entry);
  }

  // `isGone` may free an entry for which it answers true.
  template <class IsGone>
  void removeIf(IsGone isGone) {
    for (u32 i = 0; i < bucketCount_; ++i) {
      for (Entry** place = buckets_ ? &buckets_[i] : &onlyBucket_; Entry* const entry = *place;) {
        Entry* const next = entry->*link;
        if (!isGone(*entry)) {
          place = &(entry->*link);
        } else {
          *place = next;
          --count_;
        }
      }
    }
  }

  // The other one holds the same.
  void replace(Entry* entry, Entry* other) noexcept {
    other->*link = entry->*link;
    *placeOf(entry) = other;
  }

  void leave(Entry* entry) noexcept {
    *placeOf(entry) = entry->*link;
    if (--count_ < kFewEntries / 2 && buckets_) arrange(1);
  }

 private:
  static constexpr u32 kFewEntries = 8;  // that one bucket is enough for
  static constexpr u32 kFirstBuckets = 32;

  template <class Key>
  static u32 mixed(Key value) noexcept {
    std::uintptr_t number;
    if constexpr (std::is_pointer_v<Key>) {
      number = reinterpret_cast<std::uintptr_t>(value);
    } else {
      number = value;
    }
    const u32 bits = static_cast<u32>(number) * 0x9E3779B1u;
    return bits ^ bits >> 15;
  }

  template <class Key>
  Entry** bucketOf(Key value) noexcept {
    return buckets_ ? &buckets_[mixed(value) & (bucketCount_ - 1)] : &onlyBucket_;
  }

  Entry** placeOf(Entry* entry) noexcept {
    Entry** place = bucketOf(entry->*key);
    while (*place != entry) place = &((*place)->*link);
    return place;
  }

  void push(Entry* entry) noexcept {
    Entry** const bucket = bucketOf(entry->*key);
    entry->*link = std::exchange(*bucket, entry);
  }

  // `count` is a power of two.
  void arrange(u32 count) noexcept {
    HeapBuffer<Entry*> old;
    if (count > 1 && !old.tryAllocate(count)) return;
    if (count > 1) std::fill_n(old.get(), count, nullptr);
    std::swap(old, buckets_);
    const u32 oldCount = std::exchange(bucketCount_, count);
    Entry* const only = std::exchange(onlyBucket_, nullptr);
    for (u32 i = 0; i < oldCount; ++i) {
      // Turned round first: what comes last is found first, and so it stays.
      Entry* turned = nullptr;
      for (Entry* entry = old ? old[i] : only; entry;) {
        Entry* const next = std::exchange(entry->*link, turned);
        turned = std::exchange(entry, next);
      }
      while (turned) push(std::exchange(turned, turned->*link));
    }
  }

  u32 count_ = 0;
  u32 bucketCount_ = 1;
  Entry* onlyBucket_ = nullptr;
  HeapBuffer<Entry*> buckets_;
};

}  // namespace corvix
