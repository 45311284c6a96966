#include "core/baselib/text/NameTable.h"

#include <gtest/gtest.h>

#include <string>

#include "core/baselib/text/WideString.h"

namespace corvix {
namespace {

struct HashRow {
  std::string_view name;
  u32 expected;  // worked out by hand from the sixteen numbers, in unsigned 32-bit arithmetic
};

TEST(StringHash, NarrowUnitsAreSigned) {
  const HashRow rows[] = {
      {"", 0},
      {"a", 0x726CBu * ((0x61u << 6) ^ 0x61u)},
      {"\x80", 0x204E9u * ((0xFFFFFF80u << 6) ^ 0xFFFFFF80u)},
      {"ab", 0x28C61u * ((0x62u << 6) ^ 0x62u ^ (0x726CBu * ((0x61u << 6) ^ 0x61u)))},
  };
  for (const HashRow& row : rows)
    EXPECT_EQ(text::stringHash(row.name.data(), row.name.size()), row.expected) << row.name;
  EXPECT_EQ(text::stringHash(L"\x80", 1), 0x204E9u * ((0x80u << 6) ^ 0x80u)) << "wide units are not";
}

TEST(NameTable, WalksBucketsFromTheFirstAndChainsFromTheNewest) {
  text::NameTable<char, int> table;
  // Three names that meet in one bucket as long as there are 64, found by trying.
  std::vector<std::string> sameBucket;
  for (int i = 0; sameBucket.size() < 3; ++i) {
    const std::string name = std::to_string(i);
    if (text::stringHash(name.data(), name.size()) % 64 == 5) sameBucket.push_back(name);
  }
  for (const std::string& name : sameBucket) table.add(name, 0);
  std::string order;
  table.forEach([&](std::string_view name, int) { order += std::string(name) + " "; });
  EXPECT_EQ(order, sameBucket[2] + " " + sameBucket[1] + " " + sameBucket[0] + " ");
}

struct CapacityRow {
  u32 length;
  u32 capacity;
};

TEST(WideString, CapacityIsTheNextWholeThirtyTwoAbove) {
  for (const CapacityRow& row : {CapacityRow{1, 32}, {31, 32}, {32, 64}, {63, 64}, {64, 96}}) {
    const WideString string(std::wstring(row.length, L'x'));
    EXPECT_EQ(string.capacity(), row.capacity) << row.length;
    EXPECT_EQ(string.c_str()[row.length], 0);
  }
  EXPECT_EQ(WideString().c_str(), WideString(L"").c_str()) << "one buffer for all that are empty";
}

TEST(WideString, AssignsAPieceOfItself) {
  WideString string(L"0123456789");
  string.assign(string.view().substr(3, 4));
  EXPECT_EQ(string.view(), L"3456");
  string.assign({});
  EXPECT_TRUE(string.empty());
}

}  // namespace
}  // namespace corvix
