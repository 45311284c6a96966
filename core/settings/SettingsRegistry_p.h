// SettingsRegistry: binds declared settings to keys of the user's registry. What stands there wins over the
// declaration. Failures of the registry are silent: a setting that cannot be read has its declared value, one
// that cannot be written is left out. [shell thread]
#pragma once

#include "core/settings/SettingText_p.h"
#include "core/settings/Settings.h"
#include "core/xml/Attributes_p.h"

#include <string>
#include <vector>

namespace corvix {

class SettingsRegistry {
 public:
  // Takes in one Setting element: reads its key, or makes it on the first run, and gives value and default to
  // `settings`. What is `imposed`, if it is not null, stands in for the stored value, and is never stored.
  void registerSetting(const Attributes& declared, IBSettings& settings, const wchar_t* imposed = nullptr);

  // Writes the value and the default of every registered setting, in the order of registration, but over nothing that
  // could not be read. Returns how many settings will come back as they are.
  i32 saveAll(const IBSettings& settings) const;

  i32 count() const noexcept { return static_cast<i32>(records_.size()); }

 private:
  struct Record {
    std::wstring keyPath;
    WideString group;
    WideString item;
    bool savesData = true;  // else what stands there could not be read, and is not written over
    bool savesDefault = true;
    bool isImposed = false;  // what stands there is the user's, and waits for another start
  };

  static SettingTexts readOrCreate(Record& record, const Attributes& declared);

  std::vector<Record> records_;
};

}  // namespace corvix
