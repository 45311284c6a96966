// The words of a table that is written as one text, as `std::wistringstream` gives them.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace corvix::testing_support {

class Words {
 public:
  explicit Words(std::wstring_view text) : rest_(text) {}

  Words& operator>>(std::wstring& word) {
    constexpr std::wstring_view kBlanks = L" \n";
    rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
    word = rest_.substr(0, rest_.find_first_of(kBlanks));
    rest_.remove_prefix(word.size());
    found_ = !word.empty();
    return *this;
  }

  // Whether the last word was one.
  explicit operator bool() const { return found_; }

 private:
  std::wstring_view rest_;
  bool found_ = false;
};

}  // namespace corvix::testing_support
