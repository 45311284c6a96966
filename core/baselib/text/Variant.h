// Variant: a value with a tag, as settings hold it. Empty when made; copying copies a text. [one thread at a
// time]
#pragma once

#include "core/baselib/text/WideString.h"

namespace corvix {

class Variant {
 public:
  // The numbers are fixed.
  enum class Tag : u32 { Empty = 0, Text = 1, Float = 2, Integer = 3, Bool = 4 };

  Variant() noexcept = default;
  Variant(std::wstring_view text) : tag_(Tag::Text), text_(text) {}
  Variant(const std::wstring& text) : tag_(Tag::Text), text_(text) {}
  Variant(const wchar_t* text) : tag_(Tag::Text), text_(text) {}
  Variant(WideString text) noexcept : tag_(Tag::Text), text_(std::move(text)) {}
  Variant(double number) noexcept : tag_(Tag::Float), float_(number) {}
  Variant(i32 number) noexcept : tag_(Tag::Integer), integer_(number) {}
  Variant(bool truth) noexcept : tag_(Tag::Bool), bool_(truth) {}

  Tag tag() const noexcept { return tag_; }
  bool isEmpty() const noexcept { return tag_ == Tag::Empty; }

  // The value itself; empty, 0 or false when the tag is another.
  std::wstring_view text() const noexcept { return tag_ == Tag::Text ? text_.view() : std::wstring_view(); }
  double number() const noexcept { return tag_ == Tag::Float ? float_ : 0.0; }
  i32 integer() const noexcept { return tag_ == Tag::Integer ? integer_ : 0; }
  bool truth() const noexcept { return tag_ == Tag::Bool && bool_; }

  // Whatever the tag, as an integer: a text is read as one, a float is rounded to the nearest, halves away
  // from zero, a bool is 0 or 1, an empty value is 0. What is too large becomes the nearest limit.
  CORVIX_API i32 toInteger() const noexcept;

  // Whatever the tag, as a text, without loss: a bool is "1" or "0", an empty value is empty.
  CORVIX_API WideString toText() const;

  // Same tag and same value.
  friend bool operator==(const Variant& a, const Variant& b) noexcept {
    if (a.tag_ != b.tag_) return false;
    switch (a.tag_) {
      case Tag::Empty:
        return true;
      case Tag::Text:
        return a.text_ == b.text_;
      case Tag::Float:
        return a.float_ == b.float_;
      case Tag::Integer:
        return a.integer_ == b.integer_;
      case Tag::Bool:
        return a.bool_ == b.bool_;
    }
    return false;
  }
  friend bool operator!=(const Variant& a, const Variant& b) noexcept { return !(a == b); }

 private:
  Tag tag_ = Tag::Empty;
  union {
    double float_ = 0.0;
    i32 integer_;
    bool bool_;
  };
  WideString text_;
};

}  // namespace corvix
