#include "shell/documents/manager/RecentList_p.h"

#include "core/baselib/system/ApplicationKey_p.h"
#include "core/baselib/system/RegistryKey_p.h"
#include "shell/documents/manager/DocumentPlace_p.h"

#include <algorithm>

namespace corvix {

namespace {

std::wstring keyPath() { return applicationKeyPath() + L"\\Recent"; }

}  // namespace

i32 RecentList::most() const {
  constexpr i32 kDefault = 4;
  return std::clamp(integerSetting(settings_, L"Interface", L"RecentFileNo", kDefault), 0, kMost);
}

// Other programs of this executable write it too. Only so many values are looked at, whatever else is there.
void RecentList::read() {
  std::vector<WideString> locations;
  if (const RegistryKey key = RegistryKey::open(HKEY_CURRENT_USER, keyPath(), KEY_QUERY_VALUE)) {
    for (i32 i = 1; i <= most(); ++i) {
      WideString location = key.text(std::to_wstring(i).c_str());
      if (!location.empty() && location.length() <= kMostUnits) locations.push_back(std::move(location));
    }
    locations_.swap(locations);
  }
  isRead_ = true;
}

void RecentList::write() const {
  const RegistryKey key = RegistryKey::create(HKEY_CURRENT_USER, keyPath(), KEY_SET_VALUE | KEY_QUERY_VALUE);
  if (!key) return;
  i32 number = 0;
  for (const WideString& location : locations_) {
    if (!key.setText(std::to_wstring(++number).c_str(), location)) return;
  }
  while (++number <= kMost && RegDeleteValueW(key.get(), std::to_wstring(number).c_str()) == ERROR_SUCCESS) {
  }
}

void RecentList::takeOut(std::wstring_view location) {
  std::erase_if(locations_, [text = std::wstring(location)](const WideString& one) {
    return isSamePath(std::wstring(one.view()), text);
  });
}

i32 RecentList::count() {
  if (!isRead_) read();
  return std::min(static_cast<i32>(locations_.size()), most());
}

const wchar_t* RecentList::at(i32 index) {
  return index >= 0 && index < count() ? locations_[static_cast<std::size_t>(index)].c_str() : nullptr;
}

void RecentList::add(const std::wstring& location) {
  if (isRead_ && !locations_.empty() && locations_.front().view() == location) return;
  WideString first(location);
  read();
  if (!locations_.empty() && locations_.front() == first) return;
  locations_.reserve(locations_.size() + 1);
  takeOut(location);
  locations_.insert(locations_.begin(), std::move(first));
  if (const auto most = static_cast<std::size_t>(this->most()); locations_.size() > most) locations_.resize(most);
  write();
}

void RecentList::forget(const wchar_t* location) {
  read();
  if (location) {
    takeOut(location);
  } else {
    locations_.clear();
  }
  write();
}

}  // namespace corvix
