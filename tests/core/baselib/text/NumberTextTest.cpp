#include "core/baselib/text/NumberText.h"

#include "core/baselib/text/Variant.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace corvix {

namespace {

TEST(NumberText, IntegersAreReadAsFarAsTheyGo) {
  const struct {
    const wchar_t* text;
    i32 expected;
  } rows[] = {{L"4", 4},
              {L"0x10", 16},
              {L"0XfF", 255},
              {L"010", 8},
              {L"089", 0},
              {L"0x", 0},
              {L"0xg", 0},
              {L"-", 0},
              {L"--5", 0},
              {L"+7", 7},
              {L"-0x10", -16},
              {L" \t\n12 34", 12},
              {L"   ", 0},
              {L"", 0},
              {L"12abc", 12},
              {L"2147483648", 2147483647},
              {L"-2147483648", -2147483647 - 1},
              {L"-2147483649", -2147483647 - 1},
              {L"99999999999999", 2147483647},
              {L"18446744073709551617", 2147483647},
              {L"0xFFFFFFFF", 2147483647},
              {L"\x0661", 0}};
  for (const auto& row : rows) EXPECT_EQ(text::readInteger(row.text), row.expected) << '"' << row.text << '"';
}

TEST(NumberText, FloatsAreReadAsFarAsTheyGo) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const wchar_t* text;
    double expected;
  } rows[] = {{L"1.5", 1.5},
              {L"-.5", -0.5},
              {L"5.", 5.0},
              {L".", 0.0},
              {L"-", 0.0},
              {L"1e", 1.0},
              {L"1e+", 1.0},
              {L"1e2", 100.0},
              {L"+1.25E-2x", 0.0125},
              {L"1,5", 1.0},
              {L"0x10", 0.0},
              {L"inf", 0.0},
              {L"nan", 0.0},
              {L"  2", 2.0},
              {L"", 0.0},
              {L"1e999", infinity},
              {L"-1e999", -infinity},
              {L"1e-999", 0.0},
              {L"0.0000001e-400", 0.0},
              {L"1000000000e308", infinity},
              {L"1e99999999999999999999", infinity},
              {L"0e99999999999999999999", 0.0}};
  for (const auto& row : rows) EXPECT_EQ(text::readFloat(row.text), row.expected) << '"' << row.text << '"';
}

TEST(NumberText, WrittenFloatsReadBackTheSame) {
  const std::pair<double, const wchar_t*> rows[] = {
      {0.1, L"0.1"}, {5.0, L"5"}, {-2.5, L"-2.5"}, {1e300, L"1e+300"}, {std::nan(""), L"0"}};
  for (const auto& [number, expected] : rows) EXPECT_EQ(Variant(number).toText().view(), expected);

  std::mt19937_64 bits(20);
  const double edges[] = {0.0, -0.0, 5e-324, -1.7976931348623157e308, std::numeric_limits<double>::infinity(), 2.0 / 3};
  for (int i = 0; i < 20000; ++i) {
    double number;
    const u64 pattern = bits();
    std::memcpy(&number, &pattern, sizeof number);
    if (i < 6) number = edges[i];
    if (std::isnan(number)) continue;
    const double again = text::readFloat(Variant(number).toText());
    ASSERT_EQ(std::memcmp(&again, &number, sizeof number), 0) << number;
  }
}

TEST(Variant, BecomesAnIntegerByItsTag) {
  const struct {
    Variant value;
    i32 expected;
  } rows[] = {{{}, 0},   {L"0", 0},       {L"0x10 pixels", 16}, {0.4, 0},          {0.5, 1},           {-0.5, -1},
              {2.5, 3},  {1e10, INT_MAX}, {-1e10, INT_MIN},     {std::nan(""), 0}, {INT_MIN, INT_MIN}, {true, 1},
              {false, 0}};
  for (const auto& row : rows)
    EXPECT_EQ(row.value.toInteger(), row.expected) << static_cast<u32>(row.value.tag()) << " " << row.value.number();
}

}  // namespace

}  // namespace corvix
