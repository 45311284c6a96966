#include "core/baselib/identity/StypeInfo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string_view>

namespace corvix {
namespace {

struct ParseRow {
  std::wstring_view text;
  std::optional<ClassWords> words;
};

constexpr std::optional<ClassWords> kNone;
constexpr u32 kTop = 0xFFFFFFFF;

const ParseRow kParseRows[] = {
    {L"0xD922852A, 0x279643b9, 0xBC23DC2F, 0x788DEB1D", ClassWords{0xD922852A, 0x279643B9, 0xBC23DC2F, 0x788DEB1D}},
    {L"010,0X1f, 9, -1", ClassWords{8, 31, 9, kTop}},
    {L"4294967295, 2147483648, +7, 0", ClassWords{kTop, 0x80000000, 7, 0}},
    {L" \t1,\n2,\r3, 4 and more", ClassWords{1, 2, 3, 4}},
    {L"0x100000001, 1, 1, 1", ClassWords{1, 1, 1, 1}},  // the low 32 bits
    {L"1, 2, 3, 08", ClassWords{1, 2, 3, 0}},           // 8 is no octal digit
    {L"1, 2, 3,", kNone},
    {L"1 , 2, 3, 4", kNone},  // a blank before the comma
    {L"1 2 3 4", kNone},
    {L"", kNone},
    {L"0x, 1, 2, 3", kNone},
    {L"1, 2, 3, -", kNone},
    {L"g, 2, 3, 4", kNone},
    {L"08, 2, 3, 4", kNone},
    {L"\x0661, 2, 3, 4", kNone},  // a digit of another script
};

TEST(ParseClassWords, Rows) {
  for (const ParseRow& row : kParseRows) {
    const std::wstring text(row.text);
    EXPECT_EQ(parseClassWords(text.data(), text.size()), row.words) << std::string(text.begin(), text.end());
  }
}

TEST(ParseClassWords, ReadsNothingBehindTheLength) { EXPECT_FALSE(parseClassWords(L"1,2,3,4", 6)); }

class StaticIdentifier final : public stype_info {
 public:
  using stype_info::stype_info;
};

// What relies on it: statics that are made twice, by first use and by the static initialiser.
TEST(StypeInfo, SecondConstructionOfAStaticKeepsTheText) {
  alignas(StaticIdentifier) static unsigned char storage[sizeof(StaticIdentifier)];
  unsigned char* volatile where = storage;
  const auto* first = new (where) StaticIdentifier(0x75CCBBE6, 0x1F, 0, 0xABCDEF01);
  EXPECT_STREQ(first->text(), "0x75CCBBE6, 0x0000001F, 0x00000000, 0xABCDEF01 ");
  const auto* second = new (where) StaticIdentifier(5, 6, 7, 8);
  EXPECT_EQ(second->words(), (ClassWords{5, 6, 7, 8}));
  EXPECT_STREQ(second->text(), "0x75CCBBE6, 0x0000001F, 0x00000000, 0xABCDEF01 ");
}

}  // namespace
}  // namespace corvix
