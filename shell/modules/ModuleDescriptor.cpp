#include "shell/modules/ModuleDescriptor_p.h"

namespace corvix {

namespace {

template <class Visit>
void forEachAttribute(const XMLNodeNode& element, Visit visit) {
  for (i32 i = 0; i < element.childCount(); ++i) {
    const XMLNode* const child = element.childAt(i);
    if (child->type() == XmlNodeType::Attribute)
      visit(child->nameView(), static_cast<const XMLNodeParam*>(child)->valueView());
  }
}

bool isSetting(const XMLNodeNode& element) noexcept { return element.nameView() == L"Setting"; }
bool isRequirement(const XMLNodeNode& element) noexcept { return element.nameView() == L"Requires"; }

// What others look it up by.
bool hasLongName(const XMLNodeNode& element) {
  bool found = false;
  forEachAttribute(element, [&](std::wstring_view name, std::wstring_view value) {
    const bool isName = isSetting(element) ? name == L"Group" || name == L"Item" : name == L"Name";
    found = found || (isName && value.size() > ModuleDescriptor::kLongestName);
  });
  return found;
}

bool isWithinLimits(std::wstring_view name, std::wstring_view value) noexcept {
  return name.size() <= ModuleDescriptor::kLongestName && value.size() <= ModuleDescriptor::kLongestValue;
}

// Of the attributes that are taken in, in units.
std::size_t lengthOf(const XMLNodeNode& element) {
  std::size_t length = 0;
  u32 count = 0;
  forEachAttribute(element, [&](std::wstring_view name, std::wstring_view value) {
    if (isWithinLimits(name, value) && count++ < ModuleDescriptor::kMostAttributes)
      length += name.size() + value.size();
  });
  return length;
}

void complain(std::wstring& complaints, const wchar_t* what, u32 count, const std::wstring& why) {
  if (!count) return;
  if (!complaints.empty()) complaints += L' ';
  complaints += what + std::to_wstring(count) + L" (" + why + L").";
}

}  // namespace

class ModuleDescriptor::Reading {
 public:
  explicit Reading(ModuleDescriptor& into) noexcept : into_(into), builder_(into.table_) {}

  std::vector<Attributes> read(const XMLNodeNode& plugin) {
    const u32 pluginCount = attributesOf(plugin).count();
    for (i32 i = 0; i < plugin.childCount(); ++i) {
      if (plugin.childAt(i)->type() == XmlNodeType::Element)
        readElement(static_cast<const XMLNodeNode&>(*plugin.childAt(i)));
    }
    builder_.finish();
    const bool hasMore = !more_.settings.empty() || !more_.requirements.empty() || more_.attributesLeftOut ||
                         more_.namesTooLong || more_.settingsTooMany || more_.requirementsTooMany;
    if (hasMore) into_.more_ = std::make_unique<More>(std::move(more_));
    into_.pluginCount_ = pluginCount;
    return std::move(interfaces_);
  }

 private:
  void readElement(const XMLNodeNode& element) {
    if (isRequirement(element)) return readRequirement(element);
    if (!isSetting(element) && element.nameView() != L"Interface") return;
    if (hasLongName(element)) {
      ++more_.namesTooLong;
    } else if (!isSetting(element)) {
      interfaces_.push_back(attributesOf(element));
    } else if (mayTakeIn(lengthOf(element))) {
      more_.settings.push_back(attributesOf(element));
    } else {
      ++more_.settingsTooMany;
    }
  }

  void readRequirement(const XMLNodeNode& element) {
    if (more_.requirements.size() >= kMostRequirements) {
      ++more_.requirementsTooMany;
      return;
    }
    const Attributes attributes = attributesOf(element);
    if (attributes.find(L"Interface")) more_.requirements.push_back(attributes);
  }

  bool mayTakeIn(std::size_t settingLength) noexcept {
    if (more_.settings.size() >= kMostSettings || settingLength > kMostSettingText - settingText_) return false;
    settingText_ += settingLength;
    return true;
  }

  Attributes attributesOf(const XMLNodeNode& element) {
    u32 count = 0;
    forEachAttribute(element, [&](std::wstring_view name, std::wstring_view value) {
      if (isWithinLimits(name, value) && count < kMostAttributes) {
        builder_.add(name, value);
        ++count;
      } else {
        ++more_.attributesLeftOut;
      }
    });
    return builder_.endElement();
  }

  ModuleDescriptor& into_;
  AttributeTable::Builder builder_;
  std::vector<Attributes> interfaces_;
  More more_;
  std::size_t settingText_ = 0;
};

std::vector<Attributes> ModuleDescriptor::read(const XMLNodeNode& plugin) { return Reading(*this).read(plugin); }

const ModuleDescriptor::More& ModuleDescriptor::more() const noexcept {
  static const More nothing;
  return more_ ? *more_ : nothing;
}

std::wstring ModuleDescriptor::complaints() const {
  if (!more_) return {};
  const auto number = [](std::size_t value) { return std::to_wstring(value); };
  std::wstring all;
  complain(all, L"Attributes left out: ", more().attributesLeftOut,
           L"an element has at most " + number(kMostAttributes) + L", a name at most " + number(kLongestName) +
               L" letters, a value at most " + number(kLongestValue));
  complain(all, L"Interfaces and settings left out: ", more().namesTooLong,
           L"a name has at most " + number(kLongestName) + L" letters");
  complain(
      all, L"Settings left out: ", more().settingsTooMany,
      L"a module has at most " + number(kMostSettings) + L", of together " + number(kMostSettingText) + L" letters");
  complain(all, L"Requirements left out: ", more().requirementsTooMany,
           L"a module has at most " + number(kMostRequirements));
  return all;
}

}  // namespace corvix
