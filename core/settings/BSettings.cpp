#include "core/settings/BSettings_p.h"

#include "core/baselib/objects/GlobalSender.h"

#include <algorithm>
#include <utility>

namespace corvix {

namespace {

using Lock = SCriticalSection::Lock;

std::wstring_view viewOf(const wchar_t* name) noexcept { return name ? name : L""; }

// For one more, so that adding it cannot fail.
template <class Owner>
void makeRoom(std::vector<Owner*>& owners) {
  if (owners.size() == owners.capacity()) owners.reserve(owners.size() * 2 + 4);
}

// Null outside the list.
template <class Owner>
Owner* at(const std::vector<Owner*>& owners, i32 index) noexcept {
  return index >= 0 && static_cast<std::size_t>(index) < owners.size() ? owners[static_cast<std::size_t>(index)]
                                                                       : nullptr;
}

}  // namespace

BNotifySender& settingsStartChanges() {
  static GlobalSender sender(IBSettings::classInfo(), "onStartChanges");
  return sender.get();
}

BNotifySender& settingsFinishChanges() {
  static GlobalSender sender(IBSettings::classInfo(), "onFinishChanges");
  return sender.get();
}

BSettings::Group* BSettings::findGroup(const wchar_t* group) const noexcept {
  const auto* const found = groups_.find(viewOf(group));
  return found ? found->get() : nullptr;
}

BSettings::Item* BSettings::findItem(const wchar_t* group, const wchar_t* item) const noexcept {
  Known& known = known_.at(group, item);
  const auto isIt = [&] {
    return text::saysSame(known.group->name.c_str(), group) && text::saysSame(Items::nameOf(*known.item), item);
  };
  if (known.item && isIt()) return known.item;
  const Group* const found = findGroup(group);
  Item* const inGroup = found ? found->items.find(viewOf(item)) : nullptr;
  if (inGroup) known = {found, inGroup};
  return inGroup;
}

BSettings::Group& BSettings::makeGroup(const wchar_t* group) {
  if (Group* const found = findGroup(group)) return *found;
  auto made = std::make_unique<Group>();
  made->name = viewOf(group);
  return *groups_.add(viewOf(group), std::move(made));
}

BSettings::Item& BSettings::makeItem(Group& group, const wchar_t* item) {
  Item* const found = group.items.find(viewOf(item));
  return found ? *found : group.items.add(viewOf(item), Item());
}

// Lists the item unless it is listed already; whoever calls gives it a value without failing. An item that is only
// watched is not listed, nor is a group of such items.
BSettings::Item& BSettings::listItem(const wchar_t* group, const wchar_t* item) {
  Item* const known = findItem(group, item);
  if (known && (known->hasCurrent || known->hasStandard)) return *known;
  Group& itsGroup = makeGroup(group);
  Item& made = makeItem(itsGroup, item);
  const bool isFirst = itsGroup.listed.empty();
  if (isFirst) makeRoom(listed_);
  makeRoom(itsGroup.listed);
  if (isFirst) listed_.push_back(&itsGroup);
  itsGroup.listed.push_back(&made);
  return made;
}

bool BSettings::getValue(const wchar_t* group, const wchar_t* item, Variant& value) const {
  Lock lock(section_);
  const Item* const found = findItem(group, item);
  if (!found || !found->hasCurrent) return false;
  value = found->current;
  return true;
}

bool BSettings::getDefault(const wchar_t* group, const wchar_t* item, Variant& value) const {
  Lock lock(section_);
  const Item* const found = findItem(group, item);
  if (!found || !found->hasStandard) return false;
  value = found->standard;
  return true;
}

void BSettings::setValue(const wchar_t* group, const wchar_t* item, const Variant& value) {
  Lock lock(section_);
  const Item* const known = findItem(group, item);
  if (known && known->hasCurrent && known->current == value) return;
  Variant fresh = value;
  Item& changed = listItem(group, item);
  changed.current = std::move(fresh);
  changed.hasCurrent = true;
  BNotifySender* const watchers = changed.watchers.get();
  const wchar_t* const groupName = watchers ? findGroup(group)->name.c_str() : nullptr;
  lock.release();
  if (!watchers) return;
  broadcastTo<ISettingListener>(*watchers, [&](ISettingListener& listener) {
    return listener.onSettingChanged(*this, groupName, Items::nameOf(changed));
  });
}

void BSettings::setDefault(const wchar_t* group, const wchar_t* item, const Variant& value) {
  Variant fresh = value;
  Lock lock(section_);
  Item& changed = listItem(group, item);
  changed.standard = std::move(fresh);
  changed.hasStandard = true;
}

void BSettings::onStartChanges() {
  {
    Lock lock(section_);
    if (++openBrackets_ != 1) return;
  }
  const auto tell = [this](ISettingsListener& listener) { return listener.onStartChanges(*this); };
  broadcastTo<ISettingsListener>(startSender_, tell);
  broadcastTo<ISettingsListener>(settingsStartChanges(), tell);
}

void BSettings::onFinishChanges() {
  {
    Lock lock(section_);
    if (openBrackets_ == 0 || --openBrackets_ != 0) return;
  }
  const auto tell = [this](ISettingsListener& listener) { return listener.onFinishChanges(*this); };
  broadcastTo<ISettingsListener>(finishSender_, tell);
  broadcastTo<ISettingsListener>(settingsFinishChanges(), tell);
}

i32 BSettings::groupCount() const noexcept {
  Lock lock(section_);
  return static_cast<i32>(listed_.size());
}

const wchar_t* BSettings::groupAt(i32 index) const noexcept {
  Lock lock(section_);
  const Group* const found = at(listed_, index);
  return found ? found->name.c_str() : nullptr;
}

i32 BSettings::itemCount(const wchar_t* group) const noexcept {
  Lock lock(section_);
  const Group* const found = findGroup(group);
  return found ? static_cast<i32>(found->listed.size()) : 0;
}

const wchar_t* BSettings::itemAt(const wchar_t* group, i32 index) const noexcept {
  Lock lock(section_);
  const Group* const found = findGroup(group);
  const Item* const listed = found ? at(found->listed, index) : nullptr;
  return listed ? Items::nameOf(*listed) : nullptr;
}

bool BSettings::getAttribute(const wchar_t* group, const wchar_t* item, const wchar_t* attribute,
                             WideString& text) const {
  Lock lock(section_);
  const Item* const found = findItem(group, item);
  if (!found || !found->attributes) return false;
  const auto named = found->attributes->find(viewOf(attribute));
  if (named == found->attributes->end()) return false;
  text = named->second;
  return true;
}

void BSettings::setAttribute(const wchar_t* group, const wchar_t* item, const wchar_t* attribute, const wchar_t* text) {
  Lock lock(section_);
  Item* const known = findItem(group, item);
  Item& described = known ? *known : makeItem(makeGroup(group), item);
  if (!described.attributes) described.attributes = std::make_unique<AttributeMap>();
  const auto named = described.attributes->find(viewOf(attribute));
  if (named == described.attributes->end()) {
    described.attributes->emplace(viewOf(attribute), text);
  } else if (named->second.view() != viewOf(text)) {
    named->second = text;
  }
}

// The watchers of an item stay once there are any: a delivery may be under way.
void BSettings::watch(const wchar_t* group, const wchar_t* item, ISettingListener* listener, i32 priority) {
  Lock lock(section_);
  Item& watched = makeItem(makeGroup(group), item);
  if (!watched.watchers) watched.watchers = std::make_unique<Watchers>();
  watched.watchers->addListener(listener, priority);
}

void BSettings::unwatch(const wchar_t* group, const wchar_t* item, ISettingListener* listener) {
  Lock lock(section_);
  const Item* const watched = findItem(group, item);
  if (watched && watched->watchers) watched->watchers->removeListener(listener);
}

}  // namespace corvix
