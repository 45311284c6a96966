// DeclaredSetting: a setting as its declaration wants it shown to the user: where (`path`), with which control
// (`Visible`, `Values`), and how its value is written. Names are those of the store. [shell thread]
#pragma once

#include "core/settings/Settings.h"

#include <optional>
#include <string>
#include <vector>

namespace corvix::windows {

struct DeclaredSetting {
  DeclaredSetting(const wchar_t* itsGroup, const wchar_t* itsItem);

  static std::vector<DeclaredSetting> all();

  const wchar_t* group;
  const wchar_t* item;
  std::wstring folder, label, type, visible, comment;
  std::vector<std::wstring> choices;

  bool isHidden() const { return visible == L"false"; }
  bool isCheck() const { return type == L"bool" && (visible == L"check" || isHidden()); }
  bool isList() const { return !choices.empty() && (visible == L"List" || isHidden()); }

  // As a user would write it.
  std::wstring show(const Variant& value) const;
  std::wstring current() const;
  std::wstring standard() const;

  // What a text means for the type; `wanted` says what would mean something when this does not.
  std::optional<Variant> parse(const std::wstring& text, std::wstring& wanted) const;

 private:
  std::wstring attribute(const wchar_t* name) const;
};

}  // namespace corvix::windows
