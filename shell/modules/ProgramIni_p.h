// ProgramIni: what an administrator says of a program in "Brisvane.INI" beside it. The file is only read.
//
//   [Plugins]
//   Folder=more\plugins           instead of "plugins"; from the program's folder
//   Disabled=a.dll;b.dll          left out
//   SafeMode=1                    no plug-in at all
//   [Options]
//   Interface.RecentFileNo=9      instead of what the user has chosen
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvix {

class ProgramIni {
 public:
  static constexpr unsigned kLargestFile = 1024 * 1024;  // in bytes

  // What is there; nothing of it when there is no such file, it is too large, or memory is short.
  static ProgramIni read(const std::wstring& path);

  const std::wstring& pluginFolder() const noexcept { return pluginFolder_; }  // may be empty
  bool isSafeMode() const noexcept { return isSafeMode_; }

  // Letter case does not count, here and below.
  bool disables(std::wstring_view path) const noexcept;

  // Null when it says nothing of that setting, or one of the names is null.
  const wchar_t* option(const wchar_t* group, const wchar_t* item) const noexcept;

 private:
  struct Option {
    std::wstring name;  // "Group.Item"
    std::wstring value;
  };

  std::wstring pluginFolder_;
  std::vector<std::wstring> disabled_;
  bool isSafeMode_ = false;
  std::vector<Option> options_;
};

}  // namespace corvix
