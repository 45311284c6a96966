#include "core/settings/SettingText_p.h"

#include "core/baselib/text/NumberText.h"

#include <cmath>

namespace corvix {

namespace {

// The items of an enumeration one by one; an empty list has one item, which is empty.
class EnumItems {
 public:
  explicit EnumItems(std::wstring_view values) noexcept : rest_(values) {}

  bool next(std::wstring_view& item) noexcept {
    if (atEnd_) return false;
    const std::size_t bar = rest_.find(L'|');
    item = rest_.substr(0, bar);
    atEnd_ = bar == std::wstring_view::npos;
    if (!atEnd_) rest_.remove_prefix(bar + 1);
    return true;
  }

 private:
  std::wstring_view rest_;
  bool atEnd_ = false;
};

// The search ends at the second match, whatever matched: in a list with an item twice the current text may
// take both, and the default then stays empty. Stored settings rely on the numbers that come out.
SettingValues readEnum(const SettingTexts& texts) {
  SettingValues values;
  EnumItems items(texts.values);
  std::wstring_view item;
  int matches = 0;
  for (i32 number = 1; matches < 2 && items.next(item); ++number) {
    if (item == texts.current.view()) {
      values.current = number;
      ++matches;
    }
    if (item == texts.standard.view()) {
      values.standard = number;
      ++matches;
    }
  }
  return values;
}

std::optional<WideString> writeEnum(const Variant& value, std::wstring_view list) {
  if (value.tag() != Variant::Tag::Integer) return std::nullopt;
  EnumItems items(list);
  std::wstring_view item;
  for (i32 number = 1; items.next(item); ++number) {
    if (number == value.integer()) return item;
  }
  return std::nullopt;
}

// A float is true here from the smallest value on, it is not rounded first.
bool isTrue(const Variant& value) {
  return value.tag() == Variant::Tag::Float ? value.number() != 0.0 : value.toInteger() != 0;
}

template <class Read>
SettingValues readBoth(const SettingTexts& texts, Read read) {
  return {read(texts.current), read(texts.standard)};
}

}  // namespace

SettingValues readSetting(const SettingTexts& texts) {
  const std::wstring_view type = texts.type;
  if (type == L"integer")
    return readBoth(texts, [](const WideString& text) { return Variant(text::readInteger(text)); });
  if (type == L"float") return readBoth(texts, [](const WideString& text) { return Variant(text::readFloat(text)); });
  if (type == L"bool") return readBoth(texts, [](const WideString& text) { return Variant(text.view() == L"true"); });
  if (type == L"enum") return readEnum(texts);
  return readBoth(texts, [](const WideString& text) { return Variant(text); });
}

std::optional<WideString> writeSetting(const Variant& value, std::wstring_view type, std::wstring_view values) {
  if (type == L"bool") return WideString(isTrue(value) ? L"true" : L"false");
  if (type == L"enum") return writeEnum(value, values);
  if (value.tag() == Variant::Tag::Float && std::isnan(value.number())) return std::nullopt;
  return value.toText();
}

}  // namespace corvix
