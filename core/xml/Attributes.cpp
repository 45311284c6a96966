#include "core/xml/Attributes_p.h"

#include <algorithm>
#include <functional>

namespace corvix {

namespace {

constexpr std::size_t kLongestCompared = 64;

wchar_t lowered(wchar_t c) noexcept { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; }

}  // namespace

bool equalInAnyCase(std::wstring_view a, std::wstring_view b) noexcept {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, wchar_t y) { return lowered(x) == lowered(y); });
}

const wchar_t* Attributes::name(u32 index) const noexcept {
  return table_->text(table_->entries_[first_ + index].name);
}

const wchar_t* Attributes::value(u32 index) const noexcept {
  return table_->text(table_->entries_[first_ + index].value);
}

const wchar_t* Attributes::find(std::wstring_view wanted) const noexcept {
  for (u32 i = 0; i < count_; ++i) {
    if (wanted == name(i)) return value(i);
  }
  return nullptr;
}

const wchar_t* Attributes::findAnyCase(std::wstring_view wanted) const noexcept {
  for (u32 i = 0; i < count_; ++i) {
    if (equalInAnyCase(wanted, name(i))) return value(i);
  }
  return nullptr;
}

void AttributeTable::Builder::add(std::wstring_view name, std::wstring_view value) {
  const u32 nameOffset = offsetOf(name);
  table_.entries_.push_back({nameOffset, offsetOf(value)});
}

Attributes AttributeTable::Builder::endElement() noexcept {
  const u32 begin = elementBegin_;
  elementBegin_ = static_cast<u32>(table_.entries_.size());
  return {table_, begin, elementBegin_ - begin};
}

void AttributeTable::Builder::finish() {
  known_.clear();
  table_.entries_.shrink_to_fit();
  table_.units_.shrink_to_fit();
}

u32 AttributeTable::Builder::offsetOf(std::wstring_view text) {
  const auto found = known_.try_emplace(text, static_cast<u32>(table_.units_.size()));
  if (found.second) {
    table_.units_.insert(table_.units_.end(), text.begin(), text.end());
    table_.units_.push_back(0);
  }
  return found.first->second;
}

std::size_t AttributeTable::Builder::Hash::operator()(std::wstring_view text) const noexcept {
  if (text.size() > kLongestCompared) return reinterpret_cast<std::size_t>(text.data()) ^ text.size();
  return std::hash<std::wstring_view>()(text);
}

bool AttributeTable::Builder::Equal::operator()(std::wstring_view a, std::wstring_view b) const noexcept {
  return a.size() > kLongestCompared ? a.data() == b.data() && a.size() == b.size() : a == b;
}

}  // namespace corvix
