// LanguageFile: the texts of a module's resource LANGUAGE. The module is data: its code is never loaded.
#pragma once

#include "core/xml/XmlNode.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace corvix {

class LanguageFile {
 public:
  static constexpr std::size_t kLongestText = 4096;
  static constexpr std::size_t kMostTexts = 100'000;

  // False, with the log saying why unless there is no such file, when it has no texts.
  bool read(const std::wstring& path);

  // The same from a resource's tree; `path` is for the log.
  bool take(const XMLNode* root, const std::wstring& path);

  // Null when there is none. Good as long as this.
  const wchar_t* find(std::wstring_view context, std::wstring_view source) const;

  const std::wstring& code() const noexcept { return code_; }
  const std::wstring& name() const noexcept { return name_; }  // in that language; may be empty
  std::size_t count() const noexcept { return texts_.size(); }

 private:
  // What no text has in it.
  static std::wstring keyOf(std::wstring_view context, std::wstring_view source);

  std::wstring code_, name_;
  std::unordered_map<std::wstring, std::wstring> texts_;
};

}  // namespace corvix
