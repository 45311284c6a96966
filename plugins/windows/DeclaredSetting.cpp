#include "plugins/windows/DeclaredSetting.h"

#include "shell/Shell.h"

#include <algorithm>
#include <cerrno>
#include <cwchar>

namespace corvix::windows {

namespace {

IBSettings& settings() { return *IShell::getInstance()->settings(); }

}  // namespace

DeclaredSetting::DeclaredSetting(const wchar_t* itsGroup, const wchar_t* itsItem) : group(itsGroup), item(itsItem) {
  type = attribute(L"Type");
  visible = attribute(L"Visible");
  comment = attribute(L"comment");
  const std::wstring path = attribute(L"path");
  const std::size_t cut = path.find_last_of(L'\\');
  folder = cut == std::wstring::npos ? group : path.substr(0, cut);
  label = path.empty() ? item : path.substr(cut + 1);
  const std::wstring values = attribute(L"Values");
  for (std::size_t at = 0; at < values.size();) {
    const std::size_t end = std::min(values.find(L'|', at), values.size());
    choices.push_back(values.substr(at, end - at));
    at = end + 1;
  }
}

std::vector<DeclaredSetting> DeclaredSetting::all() {
  std::vector<DeclaredSetting> found;
  for (i32 g = 0; g < settings().groupCount(); ++g) {
    const wchar_t* const group = settings().groupAt(g);
    for (i32 i = 0; i < settings().itemCount(group); ++i) found.emplace_back(group, settings().itemAt(group, i));
  }
  return found;
}

std::wstring DeclaredSetting::attribute(const wchar_t* name) const {
  WideString text;
  settings().getAttribute(group, item, name, text);
  return std::wstring(text);
}

std::wstring DeclaredSetting::show(const Variant& value) const {
  const auto number = static_cast<std::size_t>(value.integer());
  if (value.tag() == Variant::Tag::Bool) return value.truth() ? L"true" : L"false";
  if (type == L"enum" && number >= 1 && number <= choices.size()) return choices[number - 1];
  return std::wstring(value.toText());
}

std::wstring DeclaredSetting::current() const {
  Variant value;
  settings().getValue(group, item, value);
  return show(value);
}

std::wstring DeclaredSetting::standard() const {
  Variant value;
  settings().getDefault(group, item, value);
  return show(value);
}

std::optional<Variant> DeclaredSetting::parse(const std::wstring& text, std::wstring& wanted) const {
  wchar_t* end = nullptr;
  errno = 0;
  if (type == L"bool") {
    wanted = L"true or false";
    if (text == L"true" || text == L"false") return Variant(text == L"true");
  } else if (type == L"enum") {
    wanted = attribute(L"Values");
    const auto found = std::find(choices.begin(), choices.end(), text);
    if (found != choices.end()) return Variant(static_cast<i32>(found - choices.begin()) + 1);
  } else if (type == L"integer") {
    wanted = L"a whole number of at most 32 bits";
    const long number = std::wcstol(text.c_str(), &end, 10);
    if (!text.empty() && !*end && errno == 0) return Variant(static_cast<i32>(number));
  } else if (type == L"float") {
    wanted = L"a number";
    const double number = std::wcstod(text.c_str(), &end);
    if (!text.empty() && !*end && errno == 0) return Variant(number);
  } else {
    return Variant(text);
  }
  return std::nullopt;
}

}  // namespace corvix::windows
