#include "core/settings/SettingsRegistry.h"

#include "core/baselib/system/ApplicationKey.h"
#include "core/baselib/system/RegistryKey.h"
#include "core/settings/SettingText_p.h"

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

void createSetting(const std::wstring& keyPath, const Attributes& declared, const WideString& standard) {
  const RegistryKey key = RegistryKey::create(HKEY_CURRENT_USER, keyPath, KEY_WRITE);
  if (!key) return;
  key.setText(L"DefaultValue", standard);
  for (const Attributes::Attribute& attribute : declared.all()) key.setText(attribute.name.c_str(), attribute.value);
}

SettingTexts readOrCreate(const std::wstring& keyPath, const Attributes& declared) {
  if (const RegistryKey key = RegistryKey::open(HKEY_CURRENT_USER, keyPath, KEY_READ)) {
    return {key.text(L"Data"), key.text(L"DefaultValue"), key.text(L"Type"), key.text(L"Values")};
  }
  const WideString data = declared.find(L"Data");
  createSetting(keyPath, declared, data);
  return {data, data, declared.find(L"Type"), declared.find(L"Values")};
}

}  // namespace

void SettingsRegistry::registerSetting(const Attributes& declared, IBSettings& settings) {
  const WideString group = declared.find(L"Group");
  const WideString item = declared.find(L"Item");
  std::wstring keyPath = keyPathOf(group, item);
  const SettingTexts texts = readOrCreate(keyPath, declared);
  records_.push_back({std::move(keyPath), group, item});

  for (const Attributes::Attribute& attribute : declared.all())
    settings.setAttribute(group.c_str(), item.c_str(), attribute.name.c_str(), attribute.value.c_str());
  settings.setAttribute(group.c_str(), item.c_str(), L"Type", texts.type.c_str());
  settings.setAttribute(group.c_str(), item.c_str(), L"Values", texts.values.c_str());
  const SettingValues values = readSetting(texts);
  settings.setValue(group.c_str(), item.c_str(), values.current);
  settings.setDefault(group.c_str(), item.c_str(), values.standard);
}

i32 SettingsRegistry::saveAll(const IBSettings& settings) const {
  i32 written = 0;
  for (const Record& record : records_) {
    const RegistryKey key = RegistryKey::open(HKEY_CURRENT_USER, record.keyPath, kSaveAccess);
    if (!key) continue;
    const WideString type = key.text(L"Type");
    const WideString values = key.text(L"Values");
    const auto write = [&](bool isThere, const Variant& value, const wchar_t* name) {
      const std::optional<WideString> text = isThere ? writeSetting(value, type, values) : std::nullopt;
      return !text || key.setText(name, *text);
    };
    Variant current;
    Variant standard;
    const bool hasCurrent = settings.getValue(record.group.c_str(), record.item.c_str(), current);
    const bool hasStandard = settings.getDefault(record.group.c_str(), record.item.c_str(), standard);
    const bool wroteCurrent = write(hasCurrent, current, L"Data");
    written += write(hasStandard, standard, L"DefaultValue") && wroteCurrent;
  }
  return written;
}

}  // namespace corvix
