#include "core/settings/SettingsRegistry_p.h"

#include "core/baselib/system/ApplicationKey_p.h"
#include "core/baselib/system/RegistryKey_p.h"

namespace corvix {

namespace {

// To query and set values, make keys below, enumerate them and watch them.
constexpr REGSAM kSaveAccess = 0x2001F;

std::wstring keyPathOf(const WideString& group, const WideString& item) {
  std::wstring path;
  path.reserve(applicationKeyPath().size() + group.length() + item.length() + 16);
  path.append(applicationKeyPath()).append(L"\\Options\\").append(group.view());
  return path.append(L"\\").append(item.view());
}

// False if there was such a key already.
bool createSetting(const std::wstring& keyPath, const Attributes& declared, const WideString& standard) {
  bool isNew = true;
  const RegistryKey key = RegistryKey::create(HKEY_CURRENT_USER, keyPath, KEY_WRITE, &isNew);
  if (!key || !isNew) return isNew;
  key.setNewText(L"DefaultValue", standard);
  for (u32 i = 0; i < declared.count(); ++i) key.setNewText(declared.name(i), declared.value(i));
  return true;
}

bool canRead(const RegistryKey& key, const wchar_t* name, WideString& text) {
  return key.readText(name, text) != RegistryKey::Reading::Unreadable;
}

}  // namespace

// A key that is there and cannot be read is left alone, and so is each value of it.
SettingTexts SettingsRegistry::readOrCreate(Record& record, const Attributes& declared) {
  if (const RegistryKey key = RegistryKey::open(HKEY_CURRENT_USER, record.keyPath, KEY_READ)) {
    SettingTexts texts;
    const bool knowsType = canRead(key, L"Type", texts.type) && canRead(key, L"Values", texts.values);
    record.savesData = canRead(key, L"Data", texts.current) && knowsType;
    record.savesDefault = canRead(key, L"DefaultValue", texts.standard) && knowsType;
    return texts;
  }
  const WideString data = declared.find(L"Data");
  record.savesData = record.savesDefault = createSetting(record.keyPath, declared, data);
  return {data, data, declared.find(L"Type"), declared.find(L"Values")};
}

void SettingsRegistry::registerSetting(const Attributes& declared, IBSettings& settings, const wchar_t* imposed) {
  const WideString group = declared.find(L"Group");
  const WideString item = declared.find(L"Item");
  Record record{keyPathOf(group, item), group, item};
  SettingTexts texts = readOrCreate(record, declared);
  if (imposed) {
    texts.current = imposed;
    record.isImposed = true;
  }
  records_.push_back(std::move(record));

  for (u32 i = 0; i < declared.count(); ++i)
    settings.setAttribute(group.c_str(), item.c_str(), declared.name(i), declared.value(i));
  settings.setAttribute(group.c_str(), item.c_str(), L"Type", texts.type.c_str());
  settings.setAttribute(group.c_str(), item.c_str(), L"Values", texts.values.c_str());
  const SettingValues values = readSetting(texts);
  settings.setValue(group.c_str(), item.c_str(), values.current);
  settings.setDefault(group.c_str(), item.c_str(), values.standard);
}

i32 SettingsRegistry::saveAll(const IBSettings& settings) const {
  i32 written = 0;
  for (const Record& record : records_) {
    written += record.isImposed;
    if (record.isImposed) continue;
    const RegistryKey key = RegistryKey::open(HKEY_CURRENT_USER, record.keyPath, kSaveAccess);
    if (!key) continue;
    WideString type;
    WideString values;
    if (!canRead(key, L"Type", type) || (type.view() == L"enum" && !canRead(key, L"Values", values))) continue;
    // True if what is stored afterwards is the value.
    const auto write = [&](bool isThere, const Variant& value, bool isAllowed, const wchar_t* name) {
      if (!isThere) return true;
      const std::optional<WideString> text = writeSetting(value, type, values);
      if (!text) return value.isEmpty();
      WideString stored;
      const RegistryKey::Reading reading = key.readText(name, stored);
      if (!isAllowed || reading == RegistryKey::Reading::Unreadable) return false;
      return (reading == RegistryKey::Reading::Text && stored == *text) || key.setText(name, *text);
    };
    Variant current;
    Variant standard;
    const bool hasCurrent = settings.getValue(record.group.c_str(), record.item.c_str(), current);
    const bool hasStandard = settings.getDefault(record.group.c_str(), record.item.c_str(), standard);
    const bool wroteCurrent = write(hasCurrent, current, record.savesData, L"Data");
    written += write(hasStandard, standard, record.savesDefault, L"DefaultValue") && wroteCurrent;
  }
  return written;
}

}  // namespace corvix
