#include "core/settings/SettingText_p.h"

#include <gtest/gtest.h>

namespace corvix {

namespace {

TEST(SettingText, TextsBecomeValuesByType) {
  const Variant none{};
  const struct {
    const wchar_t *type, *values, *current, *standard;
    Variant expectedCurrent, expectedStandard;
  } rows[] = {
      {L"integer", L"", L"0x10", L"010", 16, 8},
      {L"float", L"", L"0.5 mm", L"", 0.5, 0.0},
      {L"bool", L"", L"true", L"True", true, false},
      {L"bool", L"", L"1", L"true ", false, false},
      {L"Integer", L"", L"4", L"", L"4", L""},
      {L"enum", L"Fast|Normal|Best", L"Best", L"Fast", 3, 1},
      {L"enum", L"Fast|Normal|Best", L"best", L"Normal", none, 2},
      {L"enum", L"Only", L"Only", L"", 1, none},
      {L"enum", L"", L"", L"x", 1, none},
      {L"enum", L"||a", L"a", L"", none, 2},  // the default takes both matches
      {L"enum", L"a|a|b", L"a", L"b", 2, none},
      {L"enum", L"a|a|b", L"a", L"a", 1, 1},
      {L"enum", L"a|b|", L"", L"b", 3, 2},
  };
  for (const auto& row : rows) {
    const SettingValues values = readSetting({row.current, row.standard, row.type, row.values});
    EXPECT_EQ(values.current, row.expectedCurrent) << row.type << " " << row.values << " " << row.current;
    EXPECT_EQ(values.standard, row.expectedStandard) << row.type << " " << row.values << " " << row.standard;
  }
}

TEST(SettingText, ValuesBecomeTextsByTypeAndTag) {
  const wchar_t* const kKept = nullptr;
  const struct {
    const wchar_t *type, *values;
    Variant value;
    const wchar_t* expected;
  } rows[] = {
      {L"bool", L"", L"0x10", L"true"},  {L"bool", L"", L"true", L"false"},  // a text is read as an integer
      {L"bool", L"", 0.4, L"true"},      {L"bool", L"", 0.0, L"false"},     {L"bool", L"", -1, L"true"},
      {L"bool", L"", {}, L"false"},      {L"enum", L"a|b", 2, L"b"},        {L"enum", L"a|b", 1, L"a"},
      {L"enum", L"a|b", 0, kKept},       {L"enum", L"a|b", 3, kKept},       {L"enum", L"a|b", -1, kKept},
      {L"enum", L"a|b", {}, kKept},      {L"enum", L"a|b", L"a", kKept},    {L"enum", L"", 1, L""},
      {L"integer", L"", L"007", L"007"}, {L"integer", L"", true, L"1"},     {L"int", L"", false, L"0"},
      {L"string", L"", -5, L"-5"},       {L"float", L"", 0.1, L"0.1"},      {L"x", L"", {}, L""},
  };
  for (const auto& row : rows) {
    const auto text = writeSetting(row.value, row.type, row.values);
    EXPECT_EQ(text.has_value(), row.expected != kKept) << row.type << " " << row.value.toText().c_str();
    EXPECT_EQ(text.value_or(WideString()).view(), row.expected ? row.expected : L"") << row.type;
  }
}

}  // namespace

}  // namespace corvix
