#include "core/settings/SettingsRegistry.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/ApplicationKey.h"
#include "core/settings/BSettings.h"
#include "tests/RegistryTesting.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvix {

namespace {

using Rows = std::vector<std::pair<std::wstring, std::wstring>>;

// The attributes of a Setting element.
Attributes declare(const Rows& rows) {
  auto element = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"Setting");
  for (const auto& [name, value] : rows)
    element->appendChild(make<XMLNodeParam>(element.get(), XmlNodeType::Attribute, name, value).get());
  return Attributes(*element);
}

Attributes declare(const wchar_t* group, const wchar_t* item, const wchar_t* type, const wchar_t* data,
                   const wchar_t* values = L"") {
  Rows rows{{L"Group", group}, {L"Item", item}, {L"Type", type}, {L"Values", values}, {L"Data", data}};
  rows.insert(rows.end(),
              {{L"Visible", L"text"}, {L"path", L"General Options\\Recent files"}, {L"comment", L"Set it."}});
  return declare(rows);
}

RegistryKey keyOf(const std::wstring& path, REGSAM access = KEY_ALL_ACCESS) {
  return RegistryKey::open(HKEY_CURRENT_USER, applicationKeyPath() + L"\\Options\\" + path, access);
}

class SettingsRegistryTest : public testing::Test {
 protected:
  // What a start of the program finds.
  Variant start(const Attributes& declared, const wchar_t* group = L"G", const wchar_t* item = L"I") {
    registry_ = {};
    settings_ = make<BSettings>();
    registry_.registerSetting(declared, *settings_);
    Variant value;
    settings_->getValue(group, item, value);
    return value;
  }

  testing_world::OwnRegistry world_;
  SettingsRegistry registry_;
  Ref<BSettings> settings_;
};

TEST_F(SettingsRegistryTest, FirstRunMakesTheKeyAndLaterRunsReadIt) {
  EXPECT_EQ(start(declare(L"G", L"I", L"int", L"4")), Variant(L"4"));
  {
    const RegistryKey key = keyOf(L"G\\I");
    ASSERT_TRUE(key);
    DWORD count = 0;
    RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                     nullptr);
    EXPECT_EQ(count, 9u);
    for (const auto& [name, expected] : Rows{{L"DefaultValue", L"4"},
                                             {L"Data", L"4"},
                                             {L"Type", L"int"},
                                             {L"path", L"General Options\\Recent files"},
                                             {L"comment", L"Set it."}})
      EXPECT_EQ(key.text(name.c_str()).view(), expected);
    key.setText(L"Data", L"0x20");
    key.setText(L"Type", L"integer");
  }
  // The declaration is not looked at any more, its type included.
  EXPECT_EQ(start(declare(L"G", L"I", L"bool", L"true")), Variant(32));
  Variant standard;
  EXPECT_TRUE(settings_->getDefault(L"G", L"I", standard));
  EXPECT_EQ(standard, Variant(4));
  WideString type;
  EXPECT_TRUE(settings_->getAttribute(L"G", L"I", L"Type", type));
  EXPECT_EQ(type.view(), L"integer");
}

TEST_F(SettingsRegistryTest, SavedValuesComeBack) {
  const struct {
    const wchar_t *type, *values, *data;
    Variant set;
    const wchar_t* stored;
  } rows[] = {{L"integer", L"", L"1", -7, L"-7"},
              {L"float", L"", L"1", 0.1, L"0.1"},
              {L"enum", L"a|b|c", L"a", 3, L"c"},
              {L"string", L"", L"", L"x|y", L"x|y"}};
  for (const auto& row : rows) {
    const Attributes declared = declare(L"G", row.type, row.type, row.data, row.values);
    start(declared, L"G", row.type);
    settings_->setValue(L"G", row.type, row.set);
    EXPECT_EQ(registry_.saveAll(*settings_), 1);
    EXPECT_EQ(keyOf(std::wstring(L"G\\") + row.type).text(L"Data").view(), row.stored);
    EXPECT_EQ(start(declared, L"G", row.type), row.set) << row.type;
  }
  // No such item: what is stored stays.
  start(declare(L"G", L"enum", L"enum", L"a"), L"G", L"enum");
  settings_->setValue(L"G", L"enum", 4);
  registry_.saveAll(*settings_);
  EXPECT_EQ(keyOf(L"G\\enum").text(L"Data").view(), L"c");
}

TEST_F(SettingsRegistryTest, StoredTextsOfAnyShapeAreReadSafely) {
  const std::wstring huge(600'000, L'7');
  const std::wstring large(5'000, L'7');
  const struct {
    const char* name;
    DWORD type;
    std::wstring units;
    DWORD sizeBytes;
    std::wstring expected = L"";
  } rows[] = {{"unterminated", REG_SZ, L"123", 6, L"123"},
              {"odd size", REG_SZ, L"123", 5, L"12"},
              {"one byte", REG_SZ, L"1", 1, L""},
              {"empty", REG_SZ, L"", 0, L""},
              {"zero inside", REG_SZ, std::wstring(L"12").append(1, L'\0') + L"34", 12, L"12"},
              {"binary", REG_BINARY, L"123", 8, L""},
              {"number", REG_DWORD, L"12", 4, L""},
              {"several", REG_MULTI_SZ, L"1", 4, L""},
              {"large and unterminated", REG_SZ, large, 10'000, large},
              {"beyond sane", REG_SZ, huge, 1'200'000, L""}};
  const Attributes declared = declare(L"G", L"I", L"string", L"declared");
  start(declared);
  for (const auto& row : rows) {
    RegSetValueExW(keyOf(L"G\\I").get(), L"Data", 0, row.type, reinterpret_cast<const BYTE*>(row.units.c_str()),
                   row.sizeBytes);
    EXPECT_EQ(start(declared), Variant(row.expected)) << row.name;
  }
  RegDeleteValueW(keyOf(L"G\\I").get(), L"Type");
  RegDeleteValueW(keyOf(L"G\\I").get(), L"Data");
  EXPECT_EQ(start(declared), Variant(L""));
}

TEST_F(SettingsRegistryTest, AnyNameIsAccepted) {
  const std::wstring longName(10'000, L'n');
  const struct {
    const char* what;
    std::wstring group, item;
    bool isKept;
  } rows[] = {{"backslashes", L"a\\b", L"c\\d\\e", true},
              {"blanks and others", L" a/b", L"*?:", true},
              {"a long item", L"G", longName, false},
              {"a long group", longName, L"I", false},
              {"an empty item", L"Fresh", L"", true}};
  for (const auto& row : rows) {
    const Attributes declared = declare(row.group.c_str(), row.item.c_str(), L"string", L"declared");
    EXPECT_EQ(start(declared, row.group.c_str(), row.item.c_str()), Variant(L"declared")) << row.what;
    settings_->setValue(row.group.c_str(), row.item.c_str(), L"changed");
    const bool saved = registry_.saveAll(*settings_) == 1;
    const bool kept = start(declared, row.group.c_str(), row.item.c_str()) == Variant(L"changed");
    EXPECT_EQ(saved, kept) << row.what;
    EXPECT_EQ(kept, row.isKept) << row.what;
  }
  EXPECT_EQ(start(declare(Rows{})), Variant());  // neither group nor item: both are empty
  EXPECT_EQ(settings_->groupCount(), 1);
}

TEST_F(SettingsRegistryTest, WithoutARegistryTheDeclarationHolds) {
  const RegistryKey nowhere = RegistryKey::create(HKEY_CURRENT_USER, L"Gone", KEY_ALL_ACCESS);
  RegDeleteKeyW(HKEY_CURRENT_USER, L"Gone");
  RegOverridePredefKey(HKEY_CURRENT_USER, nowhere.get());
  EXPECT_EQ(start(declare(L"G", L"I", L"bool", L"true")), Variant(true));
  EXPECT_EQ(registry_.count(), 1);
  EXPECT_EQ(registry_.saveAll(*settings_), 0);
}

}  // namespace

}  // namespace corvix
