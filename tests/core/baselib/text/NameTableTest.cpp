#include "core/baselib/text/NameTable_p.h"

#include <gtest/gtest.h>

#include <string>

#include "core/baselib/text/WideString.h"

namespace corvix {
namespace {

TEST(StringHash, NarrowUnitsAreSigned) {
  // Worked out by hand from the sixteen numbers, in unsigned 32-bit arithmetic.
  const std::pair<std::string_view, u32> rows[] = {
      {"", 0},
      {"a", 0x726CBu * ((0x61u << 6) ^ 0x61u)},
      {"\x80", 0x204E9u * ((0xFFFFFF80u << 6) ^ 0xFFFFFF80u)},
      {"ab", 0x28C61u * ((0x62u << 6) ^ 0x62u ^ (0x726CBu * ((0x61u << 6) ^ 0x61u)))},
  };
  for (const auto& [name, expected] : rows) EXPECT_EQ(text::stringHash(name.data(), name.size()), expected) << name;
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

TEST(NameTable, AWalkIsMarkedUntilItsEndHoweverItEnds) {
  text::NameTable<char, int> table;
  table.add("a", 1);
  EXPECT_THROW(table.forEach([](std::string_view, int) { throw 7; }), int);
  EXPECT_FALSE(table.isWalked());
  table.forEach([&](std::string_view, int) {
    table.forEach([](std::string_view, int) {});
    EXPECT_TRUE(table.isWalked()) << "the outer walk is still under way";
  });
  EXPECT_FALSE(table.isWalked());
}

TEST(WideString, CapacityIsTheNextWholeThirtyTwoAbove) {
  for (const auto& [length, capacity] : {std::pair{1u, 32u}, {31u, 32u}, {32u, 64u}, {63u, 64u}}) {
    const WideString string(std::wstring(length, L'x'));
    EXPECT_EQ(string.capacity(), capacity) << length;
    EXPECT_EQ(string.c_str()[length], 0);
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
