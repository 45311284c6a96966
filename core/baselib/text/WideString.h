// WideString: owned UTF-16 text, always terminated. Copying copies the text; all empty strings share one
// buffer and cost no allocation. [one thread at a time]
#pragma once

#include "core/baselib/heap/HeapAllocated.h"

#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace corvix {

class WideString {
 public:
  WideString() noexcept : text_(emptyText()) {}
  WideString(std::wstring_view text) : WideString() { assign(text); }
  WideString(const wchar_t* text) : WideString(std::wstring_view(text ? text : L"")) {}
  WideString(const std::wstring& text) : WideString(std::wstring_view(text)) {}
  WideString(const WideString& other) : WideString(other.view()) {}
  WideString(WideString&& other) noexcept : WideString() { swap(other); }
  ~WideString() {
    if (capacity_) _sfree(text_);
  }

  WideString& operator=(const WideString& other) {
    if (this != &other) assign(other.view());
    return *this;
  }
  WideString& operator=(WideString&& other) noexcept {
    swap(other);
    return *this;
  }

  // `text` may be part of this string. One whose length does not fit 32 bits is out of memory.
  void assign(std::wstring_view text) {
    if (text.size() > kLongest) throw std::bad_alloc();
    const u32 wanted = capacityFor(static_cast<u32>(text.size()));
    if (text.empty()) {
      WideString().swap(*this);
      return;
    }
    wchar_t* const old = text_;
    const bool fits = capacity_ > text.size();
    if (!fits) text_ = static_cast<wchar_t*>(heapAllocate((std::size_t{wanted} + 1) * sizeof(wchar_t)));
    std::memmove(text_, text.data(), text.size() * sizeof(wchar_t));
    length_ = static_cast<u32>(text.size());
    text_[length_] = 0;
    if (fits) return;
    if (capacity_) _sfree(old);
    capacity_ = wanted;
  }

  const wchar_t* c_str() const noexcept { return text_; }
  u32 length() const noexcept { return length_; }
  bool empty() const noexcept { return length_ == 0; }
  std::wstring_view view() const noexcept { return {text_, length_}; }
  operator std::wstring_view() const noexcept { return view(); }

  // In units, the terminator not counted; 0 for an empty string that never held anything.
  u32 capacity() const noexcept { return capacity_; }

  // What a text of that many units gets: the next whole 32 above.
  static constexpr u32 capacityFor(u32 length) noexcept { return (length & ~31u) + 32; }

  void swap(WideString& other) noexcept {
    std::swap(text_, other.text_);
    std::swap(length_, other.length_);
    std::swap(capacity_, other.capacity_);
  }

  friend bool operator==(const WideString& a, const WideString& b) noexcept { return a.view() == b.view(); }
  friend bool operator!=(const WideString& a, const WideString& b) noexcept { return !(a == b); }

 private:
  static wchar_t* emptyText() noexcept {
    static wchar_t terminator = 0;
    return &terminator;
  }

  wchar_t* text_;
  static constexpr u32 kLongest = 0xFFFFFFFF - 32;

  u32 length_ = 0;
  u32 capacity_ = 0;
};

}  // namespace corvix
