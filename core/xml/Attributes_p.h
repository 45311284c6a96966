// The attributes of a descriptor's elements. AttributeTable holds those of one module in one block: where their texts
// are, and every text once, terminated. Attributes is a view of one element's.
#pragma once

#include "core/baselib/heap/HeapAllocated.h"
#include "core/xml/XmlNode.h"

#include <unordered_map>
#include <vector>

namespace corvix {

// Letters of the alphabet only.
bool equalInAnyCase(std::wstring_view a, std::wstring_view b) noexcept;

class AttributeTable;

// Good as long as its table; its texts stay where they are once the table is finished.
class Attributes {
 public:
  Attributes() = default;

  // Null when there is none; when a name stands twice, the first. Letter case counts in `find` only.
  const wchar_t* find(std::wstring_view name) const noexcept;
  const wchar_t* findAnyCase(std::wstring_view name) const noexcept;

  // In document order.
  u32 count() const noexcept { return count_; }
  const wchar_t* name(u32 index) const noexcept;
  const wchar_t* value(u32 index) const noexcept;

 private:
  friend class AttributeTable;
  Attributes(const AttributeTable& table, u32 first, u32 count) noexcept
      : table_(&table), first_(first), count_(count) {}

  const AttributeTable* table_ = nullptr;
  u32 first_ = 0;
  u32 count_ = 0;
};

class AttributeTable {
 public:
  // Fills a table, which has nothing in it before `finish`.
  class Builder;

  AttributeTable() = default;
  AttributeTable(const AttributeTable&) = delete;
  AttributeTable& operator=(const AttributeTable&) = delete;
  ~AttributeTable() {
    if (isFinished_) _sfree(const_cast<void*>(offsets_));
  }

  // Of the element that was added first.
  Attributes first(u32 count) const noexcept { return {*this, 0, count}; }

 private:
  friend class Attributes;

  // Of an attribute's name, at twice its number, or of its value, behind that.
  const wchar_t* text(u32 place) const noexcept;

  const void* offsets_ = nullptr;   // the block, or the builder's: where each text begins, in 32 bits or, if small, 16
  const wchar_t* units_ = nullptr;  // the texts; in the block behind the offsets
  bool isSmall_ = false;
  bool isFinished_ = false;
};

// The texts that are added stand until `finish`. A text ends at its first zero.
class AttributeTable::Builder {
 public:
  explicit Builder(AttributeTable& table) noexcept : table_(table) {}
  Builder(const Builder&) = delete;
  Builder& operator=(const Builder&) = delete;

  void add(std::wstring_view name, std::wstring_view value);

  // All that was added since the last call: the attributes of one element, to be looked at as long as nothing is
  // added, and again once the table is finished.
  Attributes endElement() noexcept;

  // Once, at the end. Throws std::bad_alloc.
  void finish();

 private:
  // Short texts are the same when they read the same, long ones when they are the same piece of memory: what a block
  // says once costs once, however often it refers to it, and so does finding that out.
  struct Hash {
    std::size_t operator()(std::wstring_view text) const noexcept;
  };
  struct Equal {
    bool operator()(std::wstring_view a, std::wstring_view b) const noexcept;
  };

  u32 offsetOf(std::wstring_view text);

  AttributeTable& table_;
  std::vector<u32, HeapAllocator<u32>> offsets_;
  std::vector<wchar_t, HeapAllocator<wchar_t>> units_;
  u32 elementBegin_ = 0;

  // Most modules say little: the first texts are gone through, those behind them hashed.
  struct Known {
    std::wstring_view text;
    u32 offset;
  };
  static constexpr u32 kFew = 24;
  Known few_[kFew];
  u32 fewCount_ = 0;
  std::unordered_map<std::wstring_view, u32, Hash, Equal> more_;
};

}  // namespace corvix
