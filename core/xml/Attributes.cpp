#include "core/xml/Attributes_p.h"

#include <algorithm>
#include <functional>

namespace corvix {

namespace {

constexpr std::size_t kLongestCompared = 64;

// What nearly every module says costs it nothing.
constexpr std::wstring_view kCommonTexts[] = {L"Name",    L"GUID", L"Order",     L"Version", L"Group",
                                              L"Item",    L"Type", L"Data",      L"Visible", L"path",
                                              L"comment", L"Low",  L"Interface", L"Values"};
constexpr u32 kIsCommon = 1u << 31;
constexpr u32 kIsCommonSmall = 1u << 15;

const wchar_t* commonText(u32 index) noexcept { return kCommonTexts[index].data(); }

// A text that ends with a zero; most differ in the first letter.
bool saysExactly(const wchar_t* text, std::wstring_view wanted) noexcept {
  for (const wchar_t unit : wanted) {
    if (*text++ != unit || !unit) return false;
  }
  return !*text;
}

wchar_t lowered(wchar_t c) noexcept { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; }

}  // namespace

bool equalInAnyCase(std::wstring_view a, std::wstring_view b) noexcept {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, wchar_t y) { return lowered(x) == lowered(y); });
}

const wchar_t* AttributeTable::text(u32 place) const noexcept {
  if (isSmall_) {
    const u32 offset = static_cast<const u16*>(offsets_)[place];
    return offset & kIsCommonSmall ? commonText(offset & ~kIsCommonSmall) : units_ + offset;
  }
  const u32 offset = static_cast<const u32*>(offsets_)[place];
  return offset & kIsCommon ? commonText(offset & ~kIsCommon) : units_ + offset;
}

const wchar_t* Attributes::name(u32 index) const noexcept { return table_->text((first_ + index) * 2); }

const wchar_t* Attributes::value(u32 index) const noexcept { return table_->text((first_ + index) * 2 + 1); }

const wchar_t* Attributes::find(std::wstring_view wanted) const noexcept {
  for (u32 i = 0; i < count_; ++i) {
    if (saysExactly(name(i), wanted)) return value(i);
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
  if (offsets_.empty()) {  // enough for most modules
    offsets_.reserve(64);
    units_.reserve(768);
  }
  offsets_.push_back(offsetOf(name));
  offsets_.push_back(offsetOf(value));
}

Attributes AttributeTable::Builder::endElement() noexcept {
  const u32 begin = elementBegin_;
  elementBegin_ = static_cast<u32>(offsets_.size() / 2);
  table_.offsets_ = offsets_.data();
  table_.units_ = units_.data();
  return {table_, begin, elementBegin_ - begin};
}

void AttributeTable::Builder::finish() {
  const bool isSmall = units_.size() <= kIsCommonSmall;
  const std::size_t offsetBytes = offsets_.size() * (isSmall ? sizeof(u16) : sizeof(u32));
  void* const block = heapAllocate(offsetBytes + units_.size() * sizeof(wchar_t) + 1);
  auto* const units = reinterpret_cast<wchar_t*>(static_cast<char*>(block) + offsetBytes);
  if (isSmall) {
    std::transform(offsets_.begin(), offsets_.end(), static_cast<u16*>(block), [](u32 offset) {
      return static_cast<u16>(offset & kIsCommon ? kIsCommonSmall | (offset & ~kIsCommon) : offset);
    });
  } else {
    std::copy(offsets_.begin(), offsets_.end(), static_cast<u32*>(block));
  }
  std::copy(units_.begin(), units_.end(), units);
  table_.offsets_ = block;
  table_.units_ = units;
  table_.isSmall_ = isSmall;
  table_.isFinished_ = true;
}

u32 AttributeTable::Builder::offsetOf(std::wstring_view text) {
  const auto* const common = std::find(std::begin(kCommonTexts), std::end(kCommonTexts), text);
  if (common != std::end(kCommonTexts)) return kIsCommon | static_cast<u32>(common - kCommonTexts);
  const auto* const known =
      std::find_if(few_, few_ + fewCount_, [&](const Known& one) { return Equal()(one.text, text); });
  if (known != few_ + fewCount_) return known->offset;
  const auto offset = static_cast<u32>(units_.size());
  if (fewCount_ < kFew) {
    few_[fewCount_++] = {text, offset};
  } else if (const auto [place, isNew] = more_.try_emplace(text, offset); !isNew) {
    return place->second;
  }
  units_.insert(units_.end(), text.begin(), text.end());
  units_.push_back(0);
  return offset;
}

std::size_t AttributeTable::Builder::Hash::operator()(std::wstring_view text) const noexcept {
  if (text.size() > kLongestCompared) return reinterpret_cast<std::size_t>(text.data()) ^ text.size();
  return std::hash<std::wstring_view>()(text);
}

bool AttributeTable::Builder::Equal::operator()(std::wstring_view a, std::wstring_view b) const noexcept {
  return a.size() > kLongestCompared ? a.data() == b.data() && a.size() == b.size() : a == b;
}

}  // namespace corvix
