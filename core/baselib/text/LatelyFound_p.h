// LatelyFound: what a table gave lately, for names that are asked for again and again, as literals are. Where a caller
// has the names says where to look first; what they say decides whether it is that. For tables whose entries stay for
// good.
#pragma once

#include "core/baselib/Api.h"

namespace corvix::text {

// A null pointer says nothing, as an empty text does.
inline bool saysSame(const wchar_t* a, const wchar_t* b) noexcept {
  if (!a) a = L"";
  if (!b) b = L"";
  for (; *a == *b; ++a, ++b) {
    if (!*a) return true;
  }
  return false;
}

template <class Entry>
class LatelyFound {
 public:
  // To be looked at, and to be overwritten with what the table gives.
  Entry& at(const wchar_t* name, const wchar_t* second = nullptr) noexcept {
    return entries_[(bitsOf(name) * 31 + bitsOf(second)) % kCount];
  }

 private:
  static constexpr std::size_t kCount = 64;

  static std::size_t bitsOf(const wchar_t* name) noexcept {
    return reinterpret_cast<std::uintptr_t>(name) / sizeof(wchar_t);
  }

  Entry entries_[kCount] = {};
};

}  // namespace corvix::text
