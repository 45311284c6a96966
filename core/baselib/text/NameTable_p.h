// The table behind every map from names: chained buckets, 64 at first, twice as many whenever the load passes
// three quarters. Walks go bucket by bucket, each chain from its head; new entries come at the head. An entry is one
// block that stays where it is, the name terminated behind the value. Not locked: the owner is.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "core/baselib/text/StringHash.h"

#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace corvix::text {

template <class Char, class Value>
class NameTable {
 public:
  struct Entry {
    u32 hash;
    u32 length;  // of the name, in units
    Entry* next;
    Value value;
    Char* name() noexcept { return reinterpret_cast<Char*>(&value + 1); }
    std::basic_string_view<Char> view() noexcept { return {name(), length}; }
  };

  NameTable() : buckets_(kFirstBuckets) {}
  NameTable(const NameTable&) = delete;
  NameTable& operator=(const NameTable&) = delete;
  ~NameTable() { clear(); }

  // Of a value in the table.
  static const Char* nameOf(const Value& value) noexcept { return reinterpret_cast<const Char*>(&value + 1); }

  u32 size() const noexcept { return size_; }
  u32 bucketCount() const noexcept { return static_cast<u32>(buckets_.size()); }

  Value* find(std::basic_string_view<Char> name) const noexcept {
    return find(hashOf(name), static_cast<u32>(name.size()),
                [name](const Char* other) { return std::memcmp(other, name.data(), name.size() * sizeof(Char)) == 0; });
  }

  // For names that lie in pieces: `isName` compares the units, hash and length are known to be equal.
  template <class IsName>
  Value* find(u32 hash, u32 length, IsName isName) const noexcept {
    for (Entry* entry = buckets_[hash & mask()]; entry; entry = entry->next) {
      if (entry->hash == hash && entry->length == length && isName(entry->name())) return &entry->value;
    }
    return nullptr;
  }

  // The name must not be in the table yet. Throws std::bad_alloc; the table is as it was then.
  Value& add(std::basic_string_view<Char> name, Value value) {
    return add(hashOf(name), static_cast<u32>(name.size()), std::move(value),
               [name](Char* to) { std::memcpy(to, name.data(), name.size() * sizeof(Char)); });
  }

  // `writeName` fills in the units.
  template <class WriteName>
  Value& add(u32 hash, u32 length, Value value, WriteName writeName) {
    void* const block = heapAllocate(sizeof(Entry) + (std::size_t{length} + 1) * sizeof(Char));
    Entry*& head = buckets_[hash & mask()];
    auto* const entry = new (block) Entry{hash, length, head, std::move(value)};
    writeName(entry->name());
    entry->name()[length] = 0;
    head = entry;
    ++size_;
    if (isOverfull() && !isWalked_) grow();
    return entry->value;
  }

  // The visitor may add entries, some of which the walk then does not meet, walk itself, and throw; it may not clear
  // the table.
  template <class Visit>
  void forEach(Visit visit) {
    {
      const Walk walk(isWalked_);
      for (Entry* head : buckets_) {
        for (Entry* entry = head; entry; entry = entry->next) visit(entry->view(), entry->value);
      }
    }
    while (isOverfull() && !isWalked_ && grow()) {
    }
  }

  bool isWalked() const noexcept { return isWalked_; }

  // The buckets stay.
  void clear() noexcept {
    for (Entry*& head : buckets_) {
      while (Entry* entry = head) {
        head = entry->next;
        entry->~Entry();
        _sfree(entry);
      }
    }
    size_ = 0;
  }

 private:
  static constexpr u32 kFirstBuckets = 64;

  // Marks a walk, within another one or not, however it ends.
  class Walk {
   public:
    explicit Walk(bool& mark) noexcept : mark_(mark), before_(std::exchange(mark, true)) {}
    ~Walk() { mark_ = before_; }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

   private:
    bool& mark_;
    const bool before_;
  };

  static u32 hashOf(std::basic_string_view<Char> name) noexcept { return stringHash(name.data(), name.size()); }

  u32 mask() const noexcept { return bucketCount() - 1; }

  bool isOverfull() const noexcept { return u64{size_} * 32767 > (u64{bucketCount()} + 32) * 24575; }

  // Entries that meet again in a new bucket come out in reverse order. Without memory for more buckets the table goes
  // on with those it has and tries again with the next entry.
  bool grow() noexcept {
    Buckets old;
    try {
      old.resize(buckets_.size() * 2);
    } catch (const std::bad_alloc&) {
      return false;
    }
    old.swap(buckets_);
    for (Entry* entry : old) {
      while (entry) {
        Entry* const next = entry->next;
        Entry*& head = buckets_[entry->hash & mask()];
        entry->next = head;
        head = entry;
        entry = next;
      }
    }
    return true;
  }

  using Buckets = std::vector<Entry*, HeapAllocator<Entry*>>;
  Buckets buckets_;
  u32 size_ = 0;
  bool isWalked_ = false;
};

}  // namespace corvix::text
