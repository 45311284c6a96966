// IBSettings: the user's options, by group and item name. A value is read and set at any time; what makes the
// values last is IPluginManager::saveSettings. Names are compared exactly. [any thread; handlers run on the
// thread that made the change, outside every lock]
//
// Three kinds of listeners: those of one item (`watch`), those of one store's change brackets (`startSender`,
// `finishSender`), and those of every store of the process (`settingsStartChanges`, `settingsFinishChanges`).
#pragma once

#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/text/Variant.h"

namespace corvix {

class IBSettings;

// Told that one item has another value now. Listens through IBSettings::watch.
class ISettingListener : public IBTransportable {
  CORVIX_IDENTITY(ISettingListener, 0xF6EE13C3, 0x07F35438, 0xE917965A, 0x5A67F8E0, IBTransportable)

 public:
  // Returns one of notify::k... . May read and set items, also this one.
  virtual int onSettingChanged(IBSettings& settings, const wchar_t* group, const wchar_t* item) = 0;
};

// Told when a row of changes begins and when it has ended, once for nested rows.
class ISettingsListener : public IBTransportable {
  CORVIX_IDENTITY(ISettingsListener, 0x941FA2BF, 0xD0080281, 0xA21805FC, 0x8938EDE9, IBTransportable)

 public:
  virtual int onStartChanges(IBSettings& settings) = 0;
  virtual int onFinishChanges(IBSettings& settings) = 0;
};

class CORVIX_API IBSettings : public BSmartObject {
  CORVIX_IDENTITY(IBSettings, 0x73934614, 0x093C2028, 0xA407C6CD, 0x176D3D04, BSmartObject)

 public:
  // The first six stand in a fixed order.

  // False, and `value` as it was, when the item has none. A value may be there and be empty: that of an
  // enumeration whose stored text is none of its items.
  virtual bool getValue(const wchar_t* group, const wchar_t* item, Variant& value) const = 0;

  // Makes group and item if need be. Listeners of the item are told if the value is another than before.
  virtual void setValue(const wchar_t* group, const wchar_t* item, const Variant& value) = 0;
  virtual void setDefault(const wchar_t* group, const wchar_t* item, const Variant& value) = 0;

  // Brackets around a row of changes; they nest. A closing one too many is ignored.
  virtual void onStartChanges() = 0;
  virtual void onFinishChanges() = 0;

  virtual bool getDefault(const wchar_t* group, const wchar_t* item, Variant& value) const = 0;

  // Groups and their items in the order in which they came, those without any value left out. Names are good
  // as long as the store; null outside the list.
  virtual i32 groupCount() const noexcept = 0;
  virtual const wchar_t* groupAt(i32 index) const noexcept = 0;
  virtual i32 itemCount(const wchar_t* group) const noexcept = 0;
  virtual const wchar_t* itemAt(const wchar_t* group, i32 index) const noexcept = 0;

  // What the declaration of an item says besides its value, for an options dialog: "Type", "Values" (both as
  // stored for the user, if they are), "Visible", "path", "comment". False, and `text` as it was, when there
  // is no such attribute.
  virtual bool getAttribute(const wchar_t* group, const wchar_t* item, const wchar_t* attribute,
                            WideString& text) const = 0;
  virtual void setAttribute(const wchar_t* group, const wchar_t* item, const wchar_t* attribute,
                            const wchar_t* text) = 0;

  // `listener` is told when the item's value changes; the item need not be there yet. No reference is kept:
  // a listener stops watching before it goes. Smaller priorities are told earlier.
  virtual void watch(const wchar_t* group, const wchar_t* item, ISettingListener* listener, i32 priority) = 0;
  virtual void unwatch(const wchar_t* group, const wchar_t* item, ISettingListener* listener) = 0;

  // This store's own brackets; listeners are ISettingsListener.
  virtual BNotifySender& startSender() noexcept = 0;
  virtual BNotifySender& finishSender() noexcept = 0;
};

// The process-wide lists of ISettingsListener, told after a store's own. Kept in the global data under
// IBSettings and "onStartChanges" or "onFinishChanges".
CORVIX_API BNotifySender& settingsStartChanges();
CORVIX_API BNotifySender& settingsFinishChanges();

// A value as an integer (see Variant::toInteger), or `fallback` when there is none.
inline i32 integerSetting(const IBSettings& settings, const wchar_t* group, const wchar_t* item, i32 fallback) {
  Variant value;
  return settings.getValue(group, item, value) ? value.toInteger() : fallback;
}

}  // namespace corvix
