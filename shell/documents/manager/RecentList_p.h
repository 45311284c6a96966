// The locations that were opened or saved lately, in the registry: values "1", "2" and so on, the last one first.
#pragma once

#include "core/baselib/text/WideString.h"
#include "core/settings/Settings.h"

#include <vector>

namespace corvix {

class RecentList {
 public:
  static constexpr i32 kMost = 99;
  static constexpr u32 kMostUnits = 32767;  // the longest path

  // The settings outlive the list.
  explicit RecentList(const IBSettings& settings) noexcept : settings_(settings) {}

  i32 count();
  const wchar_t* at(i32 index);

  // To the front. What cannot be written is kept for this run.
  void add(const std::wstring& location);
  void forget(const wchar_t* location);  // null: all

 private:
  i32 most() const;
  void read();
  void write() const;
  void takeOut(std::wstring_view location);

  const IBSettings& settings_;
  std::vector<WideString> locations_;
  bool isRead_ = false;
};

}  // namespace corvix
