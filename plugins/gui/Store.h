// Store: what a window keeps below its name in the program's key: \Windows\<frame>\<panel>. Where the registry does not
// let us, nothing is kept, and everything is as it is at first.
#pragma once

#include <optional>
#include <string>

#include <windows.h>

namespace corvix::gui {

class Store {
 public:
  // `panel` empty: of the frame itself. Names that no key can have keep nothing.
  Store(const std::wstring& frame, const std::wstring& panel);

  std::optional<std::wstring> text(const wchar_t* value) const;
  std::optional<int> number(const wchar_t* value) const;
  void setText(const wchar_t* value, const std::wstring& text) const;
  void setNumber(const wchar_t* value, int number) const { setText(value, std::to_wstring(number)); }

 private:
  std::wstring path_;
};

}  // namespace corvix::gui
