#include "core/baselib/text/NumberText.h"

#include "core/baselib/text/Variant.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace corvix {

namespace {

TEST(NumberText, IntegersAreReadAsFarAsTheyGo) {
  const std::pair<i32, std::vector<const wchar_t*>> rows[] = {
      {0, {L"089", L"0x", L"0xg", L"-", L"--5", L"   ", L"", L"\x0661"}},
      {8, {L"010"}},
      {12, {L" \t\n12 34", L"+12abc"}},
      {255, {L"0XfF"}},
      {-16, {L"-0x10"}},
      {INT_MAX, {L"2147483648", L"42949672960", L"18446744073709551617", L"0xFFFFFFFF"}},
      {INT_MIN, {L"-2147483648", L"-2147483649"}},
  };
  for (const auto& [expected, texts] : rows)
    for (const wchar_t* text : texts) EXPECT_EQ(text::readInteger(text), expected) << '"' << text << '"';
}

TEST(NumberText, FloatsAreReadAsFarAsTheyGo) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::pair<double, std::vector<const wchar_t*>> rows[] = {
      {0, {L".", L"-", L"0x10", L"inf", L"nan", L"", L"1e-999", L"0.0000001e-400", L"0e99999999999999999999"}},
      {infinity, {L"1e999", L"1000000000e308", L"1e99999999999999999999"}},
      {-infinity, {L"-1e999"}},
      {-0.5, {L"-.5"}},
      {5, {L"  5."}},
      {1, {L"1e", L"1e+", L"1,5"}},
      {100, {L"1e2"}},
      {0.0125, {L"+1.25E-2x"}},
  };
  for (const auto& [expected, texts] : rows)
    for (const wchar_t* text : texts) EXPECT_EQ(text::readFloat(text), expected) << '"' << text << '"';
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
  const std::pair<i32, std::vector<Variant>> rows[] = {{0, {{}, 0.4, std::nan(""), false}},
                                                       {16, {L"0x10 pixels"}},
                                                       {1, {0.5, true}},
                                                       {-1, {-0.5}},
                                                       {3, {2.5}},
                                                       {INT_MAX, {1e10}},
                                                       {INT_MIN, {-1e10, INT_MIN}}};
  for (const auto& [expected, values] : rows)
    for (const Variant& value : values)
      EXPECT_EQ(value.toInteger(), expected) << static_cast<u32>(value.tag()) << " " << value.number();
}

}  // namespace

}  // namespace corvix
