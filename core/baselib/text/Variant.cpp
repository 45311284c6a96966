#include "core/baselib/text/Variant.h"

#include "core/baselib/text/NumberText.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvix {

i32 Variant::toInteger() const noexcept {
  using Limits = std::numeric_limits<i32>;
  switch (tag_) {
    case Tag::Text:
      return text::readInteger(text_);
    case Tag::Float:
      return std::isnan(float_)
                 ? 0
                 : static_cast<i32>(std::clamp<double>(std::round(float_), Limits::min(), Limits::max()));
    case Tag::Integer:
      return integer_;
    case Tag::Bool:
      return bool_;
    case Tag::Empty:
      break;
  }
  return 0;
}

WideString Variant::toText() const {
  switch (tag_) {
    case Tag::Text:
      return text_;
    case Tag::Float: {
      wchar_t digits[text::kFloatLength + 1];
      return std::wstring_view(digits, text::writeFloat(float_, digits));
    }
    case Tag::Integer:
      return std::to_wstring(integer_);
    case Tag::Bool:
      return bool_ ? L"1" : L"0";
    case Tag::Empty:
      break;
  }
  return {};
}

}  // namespace corvix
