#include "core/settings/SettingsRegistry_p.h"

#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/ApplicationKey_p.h"
#include "core/settings/BSettings_p.h"
#include "tests/support/ImportSlot.h"
#include "tests/support/OwnRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <list>

extern "C" {
extern decltype(&RegOpenKeyExW) openKeySlot CORVIX_IMPORTED(RegOpenKeyExW, "@20");
extern decltype(&RegQueryValueExW) queryValueSlot CORVIX_IMPORTED(RegQueryValueExW, "@24");
}

namespace corvix {

namespace {

using Rows = std::vector<std::pair<std::wstring, std::wstring>>;

// The attributes of a Setting element.
Attributes declare(const Rows& rows) {
  static std::list<AttributeTable> tables;
  AttributeTable::Builder builder(tables.emplace_back());
  for (const auto& [name, value] : rows) builder.add(name, value);
  const Attributes attributes = builder.endElement();
  builder.finish();
  return attributes;
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

  // Type and bytes of a value, as they stand there.
  static std::pair<DWORD, std::string> stored(const wchar_t* name) {
    DWORD type = 0;
    DWORD size = 2'000'000;
    std::string bytes(size, 0);
    RegQueryValueExW(keyOf(L"G\\I").get(), name, nullptr, &type, reinterpret_cast<BYTE*>(bytes.data()), &size);
    bytes.resize(size);
    return {type, bytes};
  }

  testing_support::OwnRegistry world_;
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
    bool isReadable = true;
  } rows[] = {{"unterminated", REG_SZ, L"123", 6, L"123"},
              {"odd size", REG_SZ, L"123", 5, L"12"},
              {"one byte", REG_SZ, L"1", 1, L""},
              {"empty", REG_SZ, L"", 0, L""},
              {"zero inside", REG_SZ, std::wstring(L"12").append(1, L'\0') + L"34", 12, L"12"},
              {"with a variable", REG_EXPAND_SZ, L"%TEMP%", 14, L"%TEMP%"},
              {"large, with a variable", REG_EXPAND_SZ, large, 10'002, large},
              {"binary", REG_BINARY, L"123", 8, L"", false},
              {"number", REG_DWORD, L"12", 4, L"", false},
              {"several", REG_MULTI_SZ, L"1", 4, L"", false},
              {"large and unterminated", REG_SZ, large, 10'000, large},
              {"beyond sane", REG_SZ, huge, 1'200'000, L"", false}};
  const Attributes declared = declare(L"G", L"I", L"string", L"declared");
  start(declared);
  for (const auto& row : rows) {
    const auto* const bytes = reinterpret_cast<const BYTE*>(row.units.c_str());
    RegSetValueExW(keyOf(L"G\\I").get(), L"Data", 0, row.type, bytes, row.sizeBytes);
    EXPECT_EQ(start(declared), Variant(row.expected)) << row.name;
    EXPECT_EQ(registry_.saveAll(*settings_), row.isReadable ? 1 : 0) << row.name;
    EXPECT_TRUE(stored(L"Data").first == row.type &&
                stored(L"Data").second.compare(0, row.sizeBytes, std::string(bytes, bytes + row.sizeBytes)) == 0)
        << row.name << ": not touched";
    settings_->setValue(L"G", L"I", L"changed");
    EXPECT_EQ(registry_.saveAll(*settings_), row.isReadable ? 1 : 0) << row.name;
    EXPECT_EQ(start(declared), row.isReadable ? Variant(L"changed") : Variant(row.expected)) << row.name;
    EXPECT_EQ(stored(L"Data").first, row.type) << row.name << ": stays of its kind";
  }
  RegDeleteValueW(keyOf(L"G\\I").get(), L"Type");
  RegDeleteValueW(keyOf(L"G\\I").get(), L"Data");
  EXPECT_EQ(start(declared), Variant(L""));
}

// What no later start would find again is not written, and not counted.
TEST_F(SettingsRegistryTest, OnlyWhatCanBeReadBackIsSaved) {
  const struct {
    const char* what;
    const wchar_t* type;
    Variant value;
  } rows[] = {{"a zero inside", L"string", std::wstring(L"a\0b", 3)},
              {"too long", L"string", std::wstring(600'000, L'7')},
              {"no item", L"enum", 4},
              {"no number", L"float", std::numeric_limits<double>::quiet_NaN()}};
  for (const auto& row : rows) {
    const Attributes declared = declare(L"G", row.type, row.type, L"1", L"1|2");
    const Variant before = start(declared, L"G", row.type);
    settings_->setValue(L"G", row.type, row.value);
    EXPECT_EQ(registry_.saveAll(*settings_), 0) << row.what;
    EXPECT_EQ(start(declared, L"G", row.type), before) << row.what;
  }
}

LSTATUS WINAPI refuseToOpen(HKEY, const wchar_t*, DWORD, REGSAM, HKEY*) { return ERROR_ACCESS_DENIED; }
LSTATUS WINAPI refuseToRead(HKEY, const wchar_t*, DWORD*, DWORD*, BYTE*, DWORD*) { return ERROR_NOT_ENOUGH_MEMORY; }

// The key is there, but the system does not let it be read for a moment.
TEST_F(SettingsRegistryTest, WhatCouldNotBeReadIsNeverWrittenOver) {
  const Attributes declared = declare(L"G", L"I", L"string", L"declared");
  start(declared);
  keyOf(L"G\\I").setText(L"Data", L"the user's");
  {
    const testing_support::ImportSlot slot(openKeySlot, refuseToOpen);
    EXPECT_EQ(start(declared), Variant(L"declared"));
  }
  EXPECT_EQ(registry_.saveAll(*settings_), 0);
  EXPECT_EQ(start(declared), Variant(L"the user's")) << "a key";
  {
    const testing_support::ImportSlot slot(queryValueSlot, refuseToRead);
    EXPECT_EQ(start(declared), Variant(L""));
  }
  EXPECT_EQ(registry_.saveAll(*settings_), 0);
  EXPECT_EQ(start(declared), Variant(L"the user's")) << "its values";
  RegSetValueExW(keyOf(L"G\\I").get(), L"Data", 0, REG_BINARY, reinterpret_cast<const BYTE*>("abc"), 3);
  EXPECT_EQ(registry_.saveAll(*settings_), 0);
  DWORD type = 0;
  RegQueryValueExW(keyOf(L"G\\I").get(), L"Data", nullptr, &type, nullptr, nullptr);
  EXPECT_EQ(type, DWORD{REG_BINARY}) << "what somebody has put there since the start";
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
