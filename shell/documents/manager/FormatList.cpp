#include "shell/documents/manager/FormatList_p.h"

#include "shell/documents/FileFilter.h"
#include "shell/modules/KClassFactoryLocal_p.h"
#include "shell/services/KReport_p.h"

#include <algorithm>

#include <windows.h>

namespace corvix {

namespace {

constexpr std::wstring_view kFamily = L"DocFormat.";

std::wstring_view attributeOf(const IPluginInterface& entry, const wchar_t* name) noexcept {
  const wchar_t* const value = entry.attribute(name);
  return value ? value : L"";
}

// Takes the first piece off a list with ";" between, without blanks around it.
std::wstring_view nextPiece(std::wstring_view& list) noexcept {
  const std::size_t end = std::min(list.find(L';'), list.size());
  std::wstring_view piece = list.substr(0, end);
  list.remove_prefix(std::min(end + 1, list.size()));
  piece.remove_prefix(std::min(piece.find_first_not_of(L' '), piece.size()));
  return piece.substr(0, piece.find_last_not_of(L' ') + 1);
}

wchar_t upper(wchar_t unit) noexcept {
  return static_cast<wchar_t>(reinterpret_cast<std::uintptr_t>(CharUpperW(reinterpret_cast<wchar_t*>(unit))));
}

// "*" stands for any units, "?" for any one.
bool fitsMask(std::wstring_view name, std::wstring_view mask) noexcept {
  if (mask == L"*.*") return true;
  std::size_t at = 0, in = 0, star = mask.npos, starAt = 0;
  while (at < name.size()) {
    if (in < mask.size() && mask[in] == L'*') {
      star = in++;
      starAt = at;
    } else if (in < mask.size() && (mask[in] == L'?' || upper(mask[in]) == upper(name[at]))) {
      ++in;
      ++at;
    } else if (star != mask.npos) {
      in = star + 1;
      at = ++starAt;
    } else {
      return false;
    }
  }
  return mask.find_first_not_of(L'*', in) == mask.npos;
}

bool fitsPattern(std::wstring_view pattern, std::wstring_view fileName) noexcept {
  while (!pattern.empty()) {
    const std::wstring_view mask = nextPiece(pattern);
    if (!mask.empty() && fitsMask(fileName, mask)) return true;
  }
  return false;
}

int digitOf(wchar_t c) noexcept {
  if (c >= L'0' && c <= L'9') return c - L'0';
  const wchar_t small = static_cast<wchar_t>(c | 0x20);
  return small >= L'a' && small <= L'f' ? small - L'a' + 10 : -1;
}

// How many bytes of one beginning are there; 0 when one is another, or the text is none.
u32 magicLength(std::wstring_view digits, const u8* beginning, u32 size) noexcept {
  if (digits.empty() || digits.size() % 2 || digits.size() / 2 > std::min(size, FormatList::kLongestMagic)) return 0;
  u32 told = 0;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    if (digits.substr(i, 2) == L"..") continue;
    const int high = digitOf(digits[i]), low = digitOf(digits[i + 1]);
    if (high < 0 || low < 0 || beginning[i / 2] != high * 16 + low) return 0;
    ++told;
  }
  return told;
}

class Filter final : public BSmartObject, public IFileFilter {
  CORVIX_IDENTITY(Filter, 0x62784C6C, 0x7F9384A7, 0x3B406523, 0xF90375BE, BSmartObject, IFileFilter)

 public:
  Filter(std::wstring_view description, std::wstring_view pattern, std::wstring_view formatName)
      : description_(description), pattern_(pattern), formatName_(formatName) {}
  const wchar_t* description() const noexcept override { return description_.c_str(); }
  const wchar_t* pattern() const noexcept override { return pattern_.c_str(); }
  const wchar_t* formatName() const noexcept override { return formatName_.c_str(); }

 private:
  const WideString description_;
  const WideString pattern_;
  const WideString formatName_;
};

class Filters final : public IBCollection {
  CORVIX_IDENTITY(Filters, 0x603A8F8F, 0x78832462, 0xBAA3127D, 0x38A36827, IBCollection)

 public:
  void add(std::wstring_view description, std::wstring_view pattern, std::wstring_view formatName = {}) {
    filters_.push_back(make<Filter>(description, pattern, formatName));
  }
  i32 count() const noexcept override { return static_cast<i32>(filters_.size()); }
  IBTransportable* item(i32 index) const noexcept override {
    IFileFilter* const found =
        index >= 0 && index < count() ? filters_[static_cast<std::size_t>(index)].get() : nullptr;
    return found;
  }

 private:
  std::vector<Ref<Filter>> filters_;
};

}  // namespace

std::wstring_view DeclaredFormat::textForUser() const noexcept {
  const std::wstring_view told = attributeOf(*entry, L"sHumanName");
  return told.empty() ? std::wstring_view(name()).substr(kFamily.size()) : told;
}

std::wstring_view DeclaredFormat::pattern() const noexcept { return attributeOf(*entry, L"Pattern"); }

FormatList::FormatList(IPluginManager& manager) {
  for (i32 i = 0; i < manager.interfaceCount(); ++i) {
    IPluginInterface* const entry = manager.interfaceAt(i);
    if (!std::wstring_view(entry->name()).starts_with(kFamily) || entry->module()->state() == ModuleState::Failed)
      continue;
    const std::wstring_view access = attributeOf(*entry, L"Access");
    const bool writes = access.find(L'w') != access.npos;
    formats_.push_back({entry, interfaceOrder(*entry), access.empty() || access.find(L'r') != access.npos, writes});
  }
  std::stable_sort(formats_.begin(), formats_.end(),
                   [](const DeclaredFormat& a, const DeclaredFormat& b) { return a.order < b.order; });
}

const DeclaredFormat* FormatList::find(std::wstring_view name) const noexcept {
  const auto found =
      std::find_if(formats_.begin(), formats_.end(), [&](const DeclaredFormat& one) { return one.name() == name; });
  return found == formats_.end() ? nullptr : &*found;
}

const DeclaredFormat* FormatList::writerOf(std::wstring_view fileName) const noexcept {
  const auto found = std::find_if(formats_.begin(), formats_.end(), [&](const DeclaredFormat& one) {
    return one.writes && fitsPattern(one.pattern(), fileName);
  });
  return found == formats_.end() ? nullptr : &*found;
}

IBCollection* FormatList::filters(bool forWriting) const {
  auto result = make<Filters>();
  std::wstring every;
  for (const DeclaredFormat& one : formats_) {
    if (forWriting || !one.reads || one.pattern().empty()) continue;
    if (!every.empty()) every += L';';
    every += one.pattern();
  }
  if (!every.empty()) result->add(L"All documents", every);
  for (const DeclaredFormat& one : formats_) {
    if (!one.pattern().empty() && (forWriting ? one.writes : one.reads))
      result->add(one.textForUser(), one.pattern(), one.name());
  }
  if (!forWriting) result->add(L"All files", L"*.*");
  return result.detach();
}

i32 likelihoodOf(const DeclaredFormat& format, const u8* beginning, u32 size, std::wstring_view fileName) noexcept {
  std::wstring_view magics = attributeOf(*format.entry, L"Magic");
  const bool hasMagic = !magics.empty();
  u32 longest = 0;
  while (!magics.empty()) longest = std::max(longest, magicLength(nextPiece(magics), beginning, size));
  if (longest) return static_cast<i32>(Likelihood::Magic) + static_cast<i32>(longest);
  if (fitsPattern(format.pattern(), fileName)) return static_cast<i32>(Likelihood::Pattern);
  return static_cast<i32>(hasMagic ? Likelihood::None : Likelihood::Rest);
}

Ref<IDocFormat> makeFormat(const DeclaredFormat& format, KReport& report) {
  const auto object = Ref<IBSmartObject>::adopt(format.entry->createObject());
  auto result = object.as<IDocFormat>();
  if (result) return result;
  const ICreationReport* const creation = query<ICreationReport>(format.entry);
  const std::wstring why = object ? L"it is no IDocFormat" : creation ? creation->reason() : L"it cannot be made";
  report.addLine((std::wstring(format.textForUser()) + L": " + why).c_str());
  return {};
}

}  // namespace corvix
