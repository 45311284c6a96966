#include "core/xml/Attributes.h"

#include <algorithm>

namespace corvix {

namespace {

wchar_t lowered(wchar_t c) noexcept { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; }

}  // namespace

bool equalInAnyCase(std::wstring_view a, std::wstring_view b) noexcept {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](wchar_t x, wchar_t y) { return lowered(x) == lowered(y); });
}

Attributes::Attributes(const XMLNodeNode& element) {
  for (i32 i = 0; i < element.childCount(); ++i) {
    const XMLNode* const child = element.childAt(i);
    if (child->type() != XmlNodeType::Attribute) continue;
    add(child->name(), static_cast<const XMLNodeParam*>(child)->value());
  }
}

const wchar_t* Attributes::find(std::wstring_view name) const noexcept {
  const auto found = std::find_if(all_.begin(), all_.end(),
                                  [name](const Attribute& attribute) { return attribute.name.view() == name; });
  return found == all_.end() ? nullptr : found->value.c_str();
}

const wchar_t* Attributes::findAnyCase(std::wstring_view name) const noexcept {
  const auto found = std::find_if(all_.begin(), all_.end(), [name](const Attribute& attribute) {
    return equalInAnyCase(attribute.name.view(), name);
  });
  return found == all_.end() ? nullptr : found->value.c_str();
}

}  // namespace corvix
