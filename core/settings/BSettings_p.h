// BSettings: the store behind IBSettings. It knows nothing of where values come from or go to.
#pragma once

#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/text/LatelyFound_p.h"
#include "core/baselib/text/NameTable_p.h"
#include "core/settings/Settings.h"

#include <map>
#include <memory>
#include <vector>

namespace corvix {

class BSettings final : public IBSettings {
  CORVIX_IDENTITY(BSettings, 0x233153A8, 0xCF2E38FB, 0x1B6B66A4, 0x45B5CCA3, IBSettings)

 public:
  bool getValue(const wchar_t* group, const wchar_t* item, Variant& value) const override;
  void setValue(const wchar_t* group, const wchar_t* item, const Variant& value) override;
  void setDefault(const wchar_t* group, const wchar_t* item, const Variant& value) override;
  void onStartChanges() override;
  void onFinishChanges() override;
  bool getDefault(const wchar_t* group, const wchar_t* item, Variant& value) const override;

  i32 groupCount() const noexcept override;
  const wchar_t* groupAt(i32 index) const noexcept override;
  i32 itemCount(const wchar_t* group) const noexcept override;
  const wchar_t* itemAt(const wchar_t* group, i32 index) const noexcept override;
  bool getAttribute(const wchar_t* group, const wchar_t* item, const wchar_t* attribute,
                    WideString& text) const override;
  void setAttribute(const wchar_t* group, const wchar_t* item, const wchar_t* attribute, const wchar_t* text) override;

  void watch(const wchar_t* group, const wchar_t* item, ISettingListener* listener, i32 priority) override;
  void unwatch(const wchar_t* group, const wchar_t* item, ISettingListener* listener) override;
  BNotifySender& startSender() noexcept override { return startSender_; }
  BNotifySender& finishSender() noexcept override { return finishSender_; }

 private:
  struct ByName {
    using is_transparent = void;
    bool operator()(std::wstring_view a, std::wstring_view b) const noexcept { return a < b; }
  };
  using AttributeMap = std::map<WideString, WideString, ByName>;
  struct Watchers final : BNotifySender {};
  // Lies in its group's table, which has its name; what few items have costs the others a pointer.
  struct Item {
    Variant current;
    Variant standard;
    std::unique_ptr<AttributeMap> attributes;
    std::unique_ptr<Watchers> watchers;
    bool hasCurrent = false;
    bool hasStandard = false;
  };
  using Items = text::NameTable<wchar_t, Item>;
  struct Group : HeapAllocated {
    WideString name;
    Items items;
    std::vector<Item*> listed;  // those that have a value, as they came
  };
  struct Known {
    const Group* group;
    Item* item;
  };

  // All with the lock held.
  Group* findGroup(const wchar_t* group) const noexcept;
  Item* findItem(const wchar_t* group, const wchar_t* item) const noexcept;
  Group& makeGroup(const wchar_t* group);
  Item& makeItem(Group& group, const wchar_t* item);
  Item& listItem(const wchar_t* group, const wchar_t* item);

  mutable SCriticalSection section_;
  text::NameTable<wchar_t, std::unique_ptr<Group>> groups_;
  mutable text::LatelyFound<Known> known_;
  std::vector<Group*> listed_;
  u32 openBrackets_ = 0;
  BNotifySender startSender_;
  BNotifySender finishSender_;
};

}  // namespace corvix
