// Between the texts that a descriptor or the registry holds and the typed values of a setting. Types are
// compared exactly: "integer", "float", "bool" and "enum" are typed, every other word (also "int" and "string",
// which descriptors use) keeps the text.
#pragma once

#include "core/baselib/text/Variant.h"

#include <optional>

namespace corvix {

struct SettingTexts {
  WideString current;
  WideString standard;
  WideString type;
  WideString values;  // of an enumeration: its items with "|" between them
};

struct SettingValues {
  Variant current;
  Variant standard;
};

SettingValues readSetting(const SettingTexts& texts);

// Nothing for a value that no text stands for, a number that an enumeration has no item for or that is none: what is
// stored then stays.
std::optional<WideString> writeSetting(const Variant& value, std::wstring_view type, std::wstring_view values);

}  // namespace corvix
